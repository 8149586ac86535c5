// Reads a whole regular file into memory.
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <string>

#include "core/support/FileError.h"

namespace ferrivane {

// Files that hold settings are never this large; a larger one fails with EFBIG.
inline constexpr std::size_t kLargestReadableFile = std::size_t{64} * 1024 * 1024;

// Never blocks on a pipe or a device: what is not a regular file fails with EISDIR or EINVAL. The
// returned text has at least `spareCapacity` allocated bytes behind its end, for parsers that read
// in blocks.
std::expected<std::string, FileError> readFile(const std::filesystem::path& path,
                                               std::size_t spareCapacity = 0);

}  // namespace ferrivane
