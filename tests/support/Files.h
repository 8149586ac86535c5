// What tests ask of files. Every function throws std::system_error or std::filesystem's own error
// when the system refuses, which fails the test.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::test {

std::string readText(const std::filesystem::path& path);
void writeText(const std::filesystem::path& path, std::string_view bytes);

// Permission bits, also of the folder or file that a link names.
unsigned modeOf(const std::filesystem::path& path);
void setMode(const std::filesystem::path& path, unsigned mode);

// The names in a folder, sorted.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

// How many descriptors this process has open.
std::size_t openDescriptors();

}  // namespace ferrivane::test
