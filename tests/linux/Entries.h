// Writes desktop entries for tests.
#pragma once

#include <filesystem>
#include <string>

#include "tests/support/Files.h"

namespace ferrivane::test {

// `lines` follow those that every entry of an application begins with. Missing folders are made.
inline std::filesystem::path writeEntry(const std::filesystem::path& file,
                                        const std::string& lines) {
    std::filesystem::create_directories(file.parent_path());
    writeText(file, "[Desktop Entry]\nType=Application\n" + lines + "\n");
    return file;
}

inline std::filesystem::path writeEntry(const std::filesystem::path& file, const std::string& name,
                                        const std::string& exec, const std::string& lines = "") {
    return writeEntry(file, "Name=" + name + "\nExec=" + exec + "\n" + lines);
}

}  // namespace ferrivane::test
