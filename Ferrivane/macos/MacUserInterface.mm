#import "Ferrivane/macos/MacUserInterface.h"

#include <utility>

#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/SettingsWindow.h"

namespace ferrivane {

void MacUserInterface::installMainMenu(const std::vector<Menu>& menus, Perform perform) {
    mainMenuTarget_ = [[FVMenuTarget alloc] initWithPerform:std::move(perform)];
    NSMenu* const bar = menuBarOf(menus, mainMenuTarget_);
    // Or AppKit adds items about tabs to the menu of the windows.
    NSWindow.allowsAutomaticWindowTabbing = NO;
    NSApp.mainMenu = bar;
    NSApp.windowsMenu = bar.itemArray.lastObject.submenu;
}

void MacUserInterface::showStatusItem(const StatusItem& item, Perform perform) {
    statusItemTarget_ = [[FVMenuTarget alloc] initWithPerform:std::move(perform)];
    statusItem_ = [NSStatusBar.systemStatusBar statusItemWithLength:NSSquareStatusItemLength];
    statusItem_.button.image =
        [NSImage imageWithSystemSymbolName:nsString(item.symbol)
                  accessibilityDescription:nsString(item.accessibilityDescription)];
    statusItem_.button.toolTip = nsString(item.toolTip);
    statusItem_.menu = menuOf("", item.items, statusItemTarget_);
}

void MacUserInterface::removeStatusItem() {
    if (statusItem_ == nil) return;
    [NSStatusBar.systemStatusBar removeStatusItem:statusItem_];
    statusItem_ = nil;
    statusItemTarget_ = nil;
}

void MacUserInterface::showSettings(SettingsView& view, const std::optional<std::string>&) {
    if (settings_ == nil) settings_ = [[FVSettingsWindowController alloc] initWithView:view];
    [settings_ show];
}

std::expected<void, PlatformError> MacUserInterface::openDocument(
    const std::filesystem::path& file) {
    if ([NSWorkspace.sharedWorkspace openURL:fileURL(file)]) return {};
    return std::unexpected(PlatformError{"no application opens it"});
}

}  // namespace ferrivane
