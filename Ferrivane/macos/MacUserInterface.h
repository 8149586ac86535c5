// Menus, the icon in the menu bar, and the settings window.
#pragma once

#import <Cocoa/Cocoa.h>

#import "Ferrivane/macos/Menus.h"
#include "Ferrivane/platform/UserInterface.h"

@class FVSettingsWindowController;

namespace ferrivane {

class MacUserInterface : public UserInterface {
  public:
    // AppKit itself carries out Quit, by terminate:, and all that concerns texts and windows.
    void installMainMenu(const std::vector<Menu>& menus, Perform perform) override;
    void showStatusItem(const StatusItem& item, Perform perform) override;
    void removeStatusItem() override;
    // Nothing: the system starts the application for the first link.
    void setStartsAtLogin(bool) override {}
    void showSettings(SettingsView& view, const std::optional<std::string>&) override;
    std::expected<void, PlatformError> openDocument(const std::filesystem::path& file) override;

    // Nil without one.
    NSStatusItem* statusItem() const { return statusItem_; }

  private:
    FVMenuTarget* mainMenuTarget_ = nil;
    FVMenuTarget* statusItemTarget_ = nil;
    NSStatusItem* statusItem_ = nil;
    FVSettingsWindowController* settings_ = nil;
};

}  // namespace ferrivane
