// Reads log files for the tests of the log.
#pragma once

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/Files.h"

namespace ferrivane::test {

inline constexpr std::size_t kLogStampLength = 23;
inline constexpr std::size_t kLogRotatesAbove = 2'097'152;

inline std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::vector<std::string> lines;
    std::istringstream text(readText(file));
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

// What follows the time stamp and the blank behind it.
inline std::string withoutStamp(const std::string& line) {
    return line.size() > kLogStampLength ? line.substr(kLogStampLength + 1) : line;
}

}  // namespace ferrivane::test
