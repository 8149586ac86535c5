// The application's icon among those of the system.
#pragma once

#include <glib.h>

namespace ferrivane::StatusIcon {

// As an icon theme knows it; empty where it is not installed.
const char* name();

// Drawn without any theme, a(iiay): width, height, and rows of alpha, red, green, blue; one for
// each usual size. In a grey that can be seen on dark panels and on light ones.
GVariant* pixmaps();

}  // namespace ferrivane::StatusIcon
