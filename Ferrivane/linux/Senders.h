// Finds out which application a process belongs to: walks from the process upwards, past programs
// that only pass links on, to the first one that the desktop knows as an application.
//
// What cannot be known stays unknown. The active window is no witness, and of what a process
// inherits only a start-up id that names a live process is believed.
#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

#include "Ferrivane/linux/DesktopEntries.h"
#include "core/Opener.h"

namespace ferrivane::Senders {

// What the process that carries the link knows of where it came from.
struct Origin {
    pid_t sender = 0;          // the parent, or the caller on the bus
    std::string controlGroup;  // the carrier's own; it survives the end of its parents
    std::string startupId;     // DESKTOP_STARTUP_ID as the carrier was given it
};

// Whether the process only opens links for others, as a shell does.
bool isLauncher(pid_t process);

// The application that this very process is, if the desktop knows it as one. A launcher is none by
// its program, but may be part of one.
std::optional<Opener> application(pid_t process, const DesktopEntries& entries);

// This process's origin. Read it before the process forks.
Origin ownOrigin();

// A process that is no application of the desktop gives an opener with a path only; no process,
// none.
std::optional<Opener> opener(const Origin& origin, const DesktopEntries& registry);

}  // namespace ferrivane::Senders
