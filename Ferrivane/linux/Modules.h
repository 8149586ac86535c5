// The shared objects that are loaded only when needed. They lie beside the executable in a build
// folder, and in a library folder of their own once installed. A process that outlives an upgrade
// must not load those of the next version, so their names hold it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace ferrivane::Modules {

// The file names of this version's.
std::string desktop();
std::string windows();

// Where a module is installed.
std::optional<std::filesystem::path> find(const std::string& fileName);

// The address of a module's entry; null, with a line on standard error, when it cannot be loaded.
// A loaded module stays.
void* load(const std::string& fileName, const char* entry);

}  // namespace ferrivane::Modules
