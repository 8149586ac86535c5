// A failed file operation: what was tried, on which path, and the system's error number.
#pragma once

#include <cerrno>
#include <filesystem>
#include <string>

namespace ferrivane {

struct FileError {
    enum class Operation { open, read, write, replace, createFolder };

    Operation operation = Operation::open;
    std::filesystem::path path;
    int code = 0;  // errno

    // "open failed: " and the system's text; a folder that could not be made is named, because it
    // need not be the path the caller asked for.
    std::string description() const;

    bool operator==(const FileError&) const = default;
};

// The system's text for an error number, as strerror gives it; safe from any thread.
std::string systemErrorText(int code);

}  // namespace ferrivane
