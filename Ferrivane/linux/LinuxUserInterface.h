// What a person sees of the resident application on Linux.
#pragma once

#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/LinuxPreferences.h"
#include "Ferrivane/platform/UserInterface.h"

namespace ferrivane {

class LinuxUserInterface : public UserInterface {
  public:
    // Both references outlive this.
    LinuxUserInterface(EventLoop& loop, LinuxPreferences& preferences)
        : loop_(loop), preferences_(preferences) {}

    // The menus stand in the settings window.
    void installMainMenu(const std::vector<Menu>& menus, Perform perform) override;
    void showStatusItem(const StatusItem& item, Perform perform) override;
    void removeStatusItem() override;
    void setStartsAtLogin(bool starts) override;
    void showSettings(SettingsView& view,
                      const std::optional<std::string>& activationToken) override;
    std::expected<void, PlatformError> openDocument(const std::filesystem::path& file) override;

  private:
    void leaveToNextVersion(const std::optional<std::string>& activationToken);

    EventLoop& loop_;
    LinuxPreferences& preferences_;
    std::vector<Menu> menus_;
    Perform perform_;
};

}  // namespace ferrivane
