// What a person sees and uses of the resident application. Main thread only.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Ferrivane/platform/Browser.h"
#include "Ferrivane/platform/Menu.h"

namespace ferrivane {

class SettingsView;

class UserInterface {
  public:
    // Receives the command of a chosen item, unless the toolkit itself carries it out.
    using Perform = std::function<void(Command)>;

    virtual ~UserInterface() = default;

    // The last menu is the one of the windows.
    virtual void installMainMenu(const std::vector<Menu>& menus, Perform perform) = 0;
    virtual void showStatusItem(const StatusItem& item, Perform perform) = 0;
    virtual void removeStatusItem() = 0;
    // Whether the application is to start with the session, so that its icon is there. When the
    // person chooses, not at each start.
    virtual void setStartsAtLogin(bool starts) = 0;
    // Shows the window, made at the first call, in front of the others. Closing it leaves the
    // application running. The view outlives it, and is the same each time. A token lets the window
    // come to the front.
    virtual void showSettings(SettingsView& view,
                              const std::optional<std::string>& activationToken) = 0;
    // Opens a document with the person's application for it.
    virtual std::expected<void, PlatformError> openDocument(const std::filesystem::path& file) = 0;
};

}  // namespace ferrivane
