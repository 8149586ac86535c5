// What takes the desktop's own libraries: the registry of default applications and the session bus
// (GIO), windows (xcb). They live in a module of their own, loaded when first needed, because
// merely loading them takes longer than handing a link to Chrome. Main thread only.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "Ferrivane/platform/Menu.h"

namespace ferrivane {

class DesktopServices {
  public:
    struct Window {
        std::optional<pid_t> process;
        std::optional<std::string> applicationClass;  // the class part of WM_CLASS
    };

    // A loop that the library's own takes in; see EventLoop.
    struct Loop {
        int descriptor = -1;
        std::function<int()> timeoutMilliseconds;
        std::function<void()> dispatch;
    };
    // The interface org.freedesktop.Application (freedesktop.org, Desktop Entry Specification,
    // "D-Bus Activation") as others call it.
    struct Calls {
        struct Sender {
            std::optional<pid_t> process;  // absent when it is gone already
            std::string startupId;
            std::optional<std::string> activationToken;
        };
        std::function<bool(std::vector<std::string> urls, const Sender&)> open;
        std::function<void(const Sender&)> activate;
        std::function<bool(const std::string& action, const Sender&)> activateAction;
        std::function<void()> sessionEnded;  // its bus, or the display of the process's start
        std::function<void()> terminate;     // by a signal; a second one ends the process at once
    };
    enum class NameClaim { owned, taken, noBus };

    virtual ~DesktopServices() = default;

    // From here on iterate(), which waits for one round of whatever happens, does the loop's work
    // too, and so does every loop that a toolkit runs on this thread.
    virtual void attach(Loop loop) = 0;
    virtual void iterate() = 0;

    // The desktop entry's file of the default application for a scheme.
    virtual std::optional<std::filesystem::path> handler(std::string_view scheme) = 0;
    // The error is the library's text.
    virtual std::expected<void, std::string> setHandler(const std::string& id,
                                                        std::string_view scheme) = 0;
    // The file in which the desktop in use names a scheme's handler by itself; absent when the
    // person's mimeapps.list decides.
    virtual std::optional<std::filesystem::path> overridingList(std::string_view scheme) = 0;
    // The process that owns a name on the session bus. Never starts a bus.
    virtual std::optional<pid_t> busNameOwner(std::string_view name) = 0;
    // Owns the application's name and answers its calls, from iterate().
    virtual NameClaim serve(const std::string& applicationId, Calls calls) = 0;
    // Gives the name up, after answering every call that was sent to it.
    virtual void stopServing() = 0;
    // Calls Activate on the owner of the name, which the bus starts if there is none.
    virtual bool activate(const std::string& applicationId,
                          const std::optional<std::string>& activationToken) = 0;
    // An icon with its menu in every panel (org.kde.StatusNotifierItem) that is there or comes
    // later; one at a time.
    virtual void showStatusItem(const StatusItem& item, std::function<void(Command)> perform) = 0;
    virtual void removeStatusItem() = 0;
    // What the panel gave with the last click on the item, for a window to come to the front; once.
    virtual std::optional<std::string> takeStatusItemToken() = 0;
    // Opens a file with the person's application for it. The error is the library's text.
    virtual std::expected<void, std::string> open(const std::filesystem::path& file) = 0;
    // Shows a file selected in the file manager (freedesktop.org, File Manager D-Bus Interface);
    // without one that can, opens its folder.
    virtual void select(const std::filesystem::path& file) = 0;
    // A value in the text of a key file (freedesktop.org, Desktop Entry Specification, "Basic
    // format"), as it is written there; absent when it is not.
    virtual std::optional<std::string> preference(const std::string& file,
                                                  const std::string& key) = 0;
    // The text with this value, and with whatever else can be read in it.
    virtual std::string withPreference(const std::string& file, const std::string& key,
                                       const std::string& value) = 0;
    // Moves a process and its session into a scope of their own, so that they do not end with
    // whatever started us. Without systemd nothing happens.
    virtual void moveToOwnScope(pid_t process) = 0;

    // Whether an X server answers at $DISPLAY.
    virtual bool hasDisplay() = 0;
    // The active window, empty when none is; absent when there is no window manager to tell.
    virtual std::optional<Window> activeWindow() = 0;
    // The processes of the windows that the window manager manages, the oldest window first.
    virtual std::vector<pid_t> windowProcesses() = 0;
    // Asks the window manager to activate the topmost window of a process.
    virtual bool activateTopmostWindow(pid_t process) = 0;
};

// The module, loaded at the first call; null, with a line on standard error, when it is not
// installed beside the program.
DesktopServices* desktopServices();

class EventLoop;
// Lets the library's loop do the work of ours from now on; again: nothing.
void attachTo(DesktopServices& services, EventLoop& loop);

}  // namespace ferrivane
