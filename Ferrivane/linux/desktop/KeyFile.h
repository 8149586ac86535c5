// Preferences in a key file, in its group "Preferences".
#pragma once

#include <filesystem>
#include <string>

namespace ferrivane::KeyFile {

bool flag(const std::filesystem::path& file, const std::string& key);
// Keeps whatever else the file says. False when it cannot be written.
bool setFlag(const std::filesystem::path& file, const std::string& key, bool value);

}  // namespace ferrivane::KeyFile
