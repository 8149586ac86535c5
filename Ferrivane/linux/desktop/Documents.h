// Opening a file with the person's application for it.
#pragma once

#include <expected>
#include <filesystem>
#include <string>

namespace ferrivane::Documents {

// The error is GIO's text.
std::expected<void, std::string> open(const std::filesystem::path& file);

}  // namespace ferrivane::Documents
