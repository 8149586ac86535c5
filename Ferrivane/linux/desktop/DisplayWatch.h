// The end of the display that the process was started for.
#pragma once

#include <functional>

namespace ferrivane::DisplayWatch {

// Holds a connection to the compositor, else, from half a second later on, to the X server; calls
// `ended`, once, when it is closed by the other side. Without a display of this machine nothing
// happens. Once per process.
void start(std::function<void()> ended);

}  // namespace ferrivane::DisplayWatch
