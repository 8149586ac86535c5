// What takes a toolkit: windows, alerts, the clipboard (Qt). It lives in a module of its own,
// loaded when something is first to be shown. Main thread only.
#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/platform/Dialogs.h"
#include "Ferrivane/platform/Menu.h"
#include "Ferrivane/platform/SavePanel.h"

namespace ferrivane {

class SettingsView;

struct SettingsWindowSetup {
    std::vector<Menu> menus;
    std::function<void(Command)> perform;
    std::string frame;  // as the window gave it to frameChanged; empty at first
    std::function<void(const std::string& frame)> frameChanged;
};

class Toolkit {
  public:
    virtual ~Toolkit() = default;

    // Returns at once. `closed` is called when the person has answered; `holdsClipboard` tells
    // whether the link is now on the clipboard, which lives only as long as this process.
    virtual void showLaunchFailure(const LaunchFailureAlert& alert,
                                   std::function<void(bool holdsClipboard)> closed) = 0;
    // Returns at once. `answered` is called when the person has answered.
    virtual void showSavePanel(const SavePanel::Question& question,
                               std::function<void(const SavePanel::Answer&)> answered) = 0;
    // The window is made at the first call, as the setup says. The view outlives it.
    virtual void showSettings(SettingsView& view, const SettingsWindowSetup& setup,
                              const std::optional<std::string>& activationToken) = 0;
    // Calls `work` once another program has taken the clipboard, or after ten minutes.
    virtual void whenClipboardIsFree(std::function<void()> work) = 0;
};

// The module, loaded at the first call that finds a display, its work done by this loop from then
// on. The error says why nothing can be shown now; a later call may find a display.
std::expected<Toolkit*, std::string> toolkit(EventLoop& loop);

// A window manager may leave the window of a program in the background where it is; it is asked
// again once the window is there.
void bringToFrontSoon(EventLoop& loop);

}  // namespace ferrivane
