// GLib's main loop, and ours within it.
#pragma once

#include "Ferrivane/linux/DesktopServices.h"

namespace ferrivane::MainContext {

// Once per process.
void attach(DesktopServices::Loop loop);
void iterate();

}  // namespace ferrivane::MainContext
