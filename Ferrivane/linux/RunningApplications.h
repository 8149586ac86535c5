// The applications that a person sees as running: those with a window, and those that the desktop
// has started in units of their own.
#pragma once

#include <vector>

#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/platform/Applications.h"

namespace ferrivane::RunningApplications {

// One for each desktop id and path, by its oldest process; the path is the one that an opener of
// this application has.
std::vector<Applications::Running> current(const DesktopEntries& registry);

}  // namespace ferrivane::RunningApplications
