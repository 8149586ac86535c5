// Opening a file with the person's application for it, and showing one in the file manager.
#pragma once

#include <expected>
#include <filesystem>
#include <string>

namespace ferrivane::Documents {

// The error is GIO's text.
std::expected<void, std::string> open(const std::filesystem::path& file);

// Shows a file selected in the file manager; without one that can, opens its folder.
void select(const std::filesystem::path& file);

}  // namespace ferrivane::Documents
