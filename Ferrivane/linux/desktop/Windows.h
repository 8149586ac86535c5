// Windows of an X11 session, as its window manager tells of them (Extended Window Manager
// Hints 1.5).
#pragma once

#include "Ferrivane/linux/DesktopServices.h"

namespace ferrivane::Windows {

bool canConnect();

// Absent without an X server or a window manager; without a process when no window is active.
std::optional<DesktopServices::Window> active();

std::vector<pid_t> processes();

// False when the process has no window. The request carries the server's current time, because
// window managers refuse outdated ones.
bool activateTopmost(pid_t process);

}  // namespace ferrivane::Windows
