// The value of a desktop entry's Exec key (freedesktop.org, Desktop Entry Specification 1.5).
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::ExecLine {

// The words of a value of which the escapes of the file are undone, field codes included.
std::vector<std::string> words(std::string_view value);

// The word that names the program, behind "env" and its assignments; empty when there is none.
std::string program(const std::vector<std::string>& words);

// The executable file of this name; absolute, found through PATH; absent when there is none.
std::optional<std::filesystem::path> findProgram(const std::string& name);

// The words without field codes.
std::vector<std::string> command(const std::vector<std::string>& words);

}  // namespace ferrivane::ExecLine
