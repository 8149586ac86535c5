// Finds the browser of Chrome's family that links go to, and the folder that belongs to it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Ferrivane/linux/DesktopEntries.h"

namespace ferrivane {

struct ChromeLocation {
    std::filesystem::path entry;       // the desktop entry's file
    std::filesystem::path executable;  // the program that its Exec names
    std::vector<std::string> command;  // the Exec line without field codes
    std::filesystem::path userDataDirectory;
    std::vector<std::string_view> processNames;  // file names of the running browser's executable
    std::string_view folder = {};  // a native one's, by which it calls the directory by default
    bool isContained = false;      // Flatpak or Snap: it must be started through its Exec line
    bool hasOwnFolder = false;     // so must one whose Exec line names another folder
};

namespace ChromeLocator {

// Reads an environment variable; empty when it is not set.
using Environment = std::function<std::string(const char* variable)>;

// Google Chrome first, else Chromium; those inside a Flatpak or Snap after all native ones. The
// user data directory is found as Chromium finds it (chrome_paths_linux.cc): a switch in the Exec
// line, $CHROME_USER_DATA_DIR, $CHROME_CONFIG_HOME, $XDG_CONFIG_HOME, ~/.config, in this order.
std::optional<ChromeLocation> locate(const DesktopEntries& entries,
                                     const std::filesystem::path& home,
                                     const Environment& environment);

// Where a native browser keeps its files by this environment, without a switch.
std::filesystem::path nativeFolder(std::string_view folder, const std::filesystem::path& home,
                                   const Environment& environment);

}  // namespace ChromeLocator

}  // namespace ferrivane
