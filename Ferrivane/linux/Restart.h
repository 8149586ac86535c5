// A resident process outlives the installation of a newer version, whose modules it cannot use.
#pragma once

#include <deque>

#include "Ferrivane/platform/Dialogs.h"

namespace ferrivane::Restart {

// Whether the program's file has been replaced by another one, and the modules of its version are
// gone.
bool isDue();

// Puts the program that is installed now, as an agent, in the place of this process. It receives
// the alerts. Returns when that fails.
void run(const std::deque<LaunchFailureAlert>& alerts);

// The alerts that the program before has left to this one; once.
std::deque<LaunchFailureAlert> takeAlerts();

}  // namespace ferrivane::Restart
