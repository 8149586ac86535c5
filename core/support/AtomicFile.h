// Replaces a file's contents as a whole: readers see the old bytes or the new ones, never a
// mixture.
#pragma once

#include <expected>
#include <filesystem>
#include <string_view>

#include "core/support/FileError.h"

namespace ferrivane::AtomicFile {

// Writes a temporary file beside `path`, flushes it to the disk and renames it over `path`. Missing
// folders are made with mode 0700. A new file gets mode 0600, an existing one keeps its mode. Where
// `path` is a symbolic link, the link stays and its target is replaced. On failure `path` is as it
// was and no temporary file is left; one left by a process that was killed is removed by the next
// write to the same path.
std::expected<void, FileError> write(const std::filesystem::path& path, std::string_view bytes);

// Creates `folder` and every missing folder above it, each with mode 0700.
std::expected<void, FileError> createFolders(const std::filesystem::path& folder);

}  // namespace ferrivane::AtomicFile
