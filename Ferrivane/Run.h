// The process entry that every shell shares: chooses between command, links and application.
#pragma once

#include <string>
#include <vector>

#include "Ferrivane/platform/Platform.h"

namespace ferrivane {

// Takes the arguments without the program's path and returns the process's exit status. Main
// thread.
int run(const std::vector<std::string>& arguments, const Platform& platform);

}  // namespace ferrivane
