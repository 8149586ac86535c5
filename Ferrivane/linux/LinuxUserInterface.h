// What a person sees of the resident application on Linux.
#pragma once

#include "Ferrivane/platform/UserInterface.h"

namespace ferrivane {

class LinuxUserInterface : public UserInterface {
  public:
    void installMainMenu(const std::vector<Menu>& menus, Perform perform) override;
    void showStatusItem(const StatusItem& item, Perform perform) override;
    void removeStatusItem() override;
    void setStartsAtLogin(bool starts) override;
    void showSettings(SettingsView& view,
                      const std::optional<std::string>& activationToken) override;
    std::expected<void, PlatformError> openDocument(const std::filesystem::path& file) override;
};

}  // namespace ferrivane
