// Preferences in a key file, in its group "Preferences".
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace ferrivane::KeyFile {

// As it is written there; absent when it is not.
std::optional<std::string> value(const std::filesystem::path& file, const std::string& key);
// Keeps whatever else the file says. False when it cannot be written.
bool setValue(const std::filesystem::path& file, const std::string& key, const std::string& text);

}  // namespace ferrivane::KeyFile
