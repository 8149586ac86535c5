// Preferences in the text of a key file, in its group "Preferences".
#pragma once

#include <optional>
#include <string>

namespace ferrivane::KeyFile {

// As it is written there; absent when it is not.
std::optional<std::string> value(const std::string& file, const std::string& key);
// The file's text with this value, and with whatever else can be read in it.
std::string withValue(const std::string& file, const std::string& key, const std::string& text);

}  // namespace ferrivane::KeyFile
