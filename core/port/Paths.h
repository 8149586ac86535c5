// Where things live on this system. The only part of the core that differs from system to system.
//
// Every path is absolute. Folders of the person's own are computed once, on first use, and stay the
// same for the life of the process; callable from any thread.
#pragma once

#include <filesystem>

namespace ferrivane::Paths {

std::filesystem::path home();
std::filesystem::path rulesFile();
std::filesystem::path logDirectory();

// Chrome's user data directory. The core looks for no browser itself: the process entry locates one
// and sets its directory here, so that the executable and the directory always belong to the same
// browser. Until then it is Google Chrome's own default. Set from the main thread only, never while
// a link is being routed.
std::filesystem::path chromeUserDataDirectory();
void setChromeUserDataDirectory(std::filesystem::path directory);

}  // namespace ferrivane::Paths
