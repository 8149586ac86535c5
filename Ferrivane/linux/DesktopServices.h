// What takes the desktop's own libraries: the registry of default applications and the session bus
// (GIO), windows (xcb). They live in a module of their own, loaded when first needed, because
// merely loading them takes longer than handing a link to Chrome. Main thread only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace ferrivane {

class DesktopServices {
  public:
    struct Window {
        std::optional<pid_t> process;
        std::optional<std::string> applicationClass;  // the class part of WM_CLASS
    };

    virtual ~DesktopServices() = default;

    // The desktop entry's file of the default application for a scheme.
    virtual std::optional<std::filesystem::path> handler(std::string_view scheme) = 0;
    // The process that owns a name on the session bus. Never starts a bus.
    virtual std::optional<pid_t> busNameOwner(std::string_view name) = 0;
    // Moves a process and its session into a scope of their own, so that they do not end with
    // whatever started us. Without systemd nothing happens.
    virtual void moveToOwnScope(pid_t process) = 0;

    // The active window, empty when none is; absent when there is no window manager to tell.
    virtual std::optional<Window> activeWindow() = 0;
    // Asks the window manager to activate the topmost window of a process.
    virtual bool activateTopmostWindow(pid_t process) = 0;
};

// The module, loaded at the first call; null, with a line on standard error, when it is not
// installed beside the program.
DesktopServices* desktopServices();

}  // namespace ferrivane
