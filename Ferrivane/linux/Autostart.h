// Starting with the session: an entry in the person's own autostart folder (freedesktop.org,
// Desktop Application Autostart Specification).
#pragma once

#include <expected>
#include <filesystem>
#include <string>

#include "core/support/FileError.h"

namespace ferrivane::Autostart {

// The entry that starts this program as the resident agent.
std::string entry(const std::filesystem::path& program);

// Whether a file's text is an entry as above for a program of this name, wherever that lies.
// Comments, blank lines and the order of keys do not count.
bool isOurs(const std::string& text, const std::string& programName);

// Writes the entry or removes it. One that is not ours, or that the person has changed, stays.
std::expected<void, FileError> set(const std::filesystem::path& file,
                                   const std::filesystem::path& program, bool starts);

}  // namespace ferrivane::Autostart
