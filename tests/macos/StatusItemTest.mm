// The icon in the menu bar, and the main menu.
#import <Cocoa/Cocoa.h>
#include <gmock/gmock.h>

#include "Ferrivane/MainMenu.h"
#include "Ferrivane/MenuBar.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/MacUserInterface.h"
#include "core/Log.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

struct StatusItemTest : ::testing::Test {
    MacUserInterface interface;
    const test::TempDir dir;
    Log log{dir / "log"};
    int settings = 0;
    MenuBar menuBar{interface, log, [] {}};

    StatusItemTest() {
        menuBar.onSettings = [this] { ++settings; };
    }
    ~StatusItemTest() override { menuBar.setVisible(false); }
};

TEST_F(StatusItemTest, ItIsThereAsLongAsItIsVisible) {
    EXPECT_EQ(interface.statusItem(), nil);
    menuBar.setVisible(true);
    NSStatusItem* const item = interface.statusItem();
    ASSERT_NE(item, nil);
    menuBar.setVisible(true);
    EXPECT_EQ(interface.statusItem(), item) << "one icon";
    menuBar.setVisible(false);
    EXPECT_EQ(interface.statusItem(), nil);
    interface.removeStatusItem();
}

TEST_F(StatusItemTest, ItHasASymbolWithAName) {
    menuBar.setVisible(true);
    NSStatusItem* const item = interface.statusItem();
    EXPECT_EQ(item.length, NSSquareStatusItemLength);
    ASSERT_NE(item.button.image, nil) << "the system has the symbol";
    EXPECT_EQ(utf8(item.button.image.accessibilityDescription), "Ferrivane");
    EXPECT_EQ(utf8(item.button.toolTip), "Ferrivane");
}

TEST_F(StatusItemTest, ItsMenuReachesTheApplication) {
    menuBar.setVisible(true);
    NSMenu* const menu = interface.statusItem().menu;
    ASSERT_EQ(menu.numberOfItems, 6);
    [menu performActionForItemAtIndex:0];
    EXPECT_EQ(settings, 1);
}

TEST_F(StatusItemTest, TheLastOfTheMainMenusIsTheOneOfTheWindows) {
    MainMenu::install(interface, [this] { ++settings; }, [] {});
    EXPECT_EQ(NSApp.mainMenu.numberOfItems, 3);
    EXPECT_EQ(NSApp.windowsMenu, [NSApp.mainMenu itemAtIndex:2].submenu);
    [[NSApp.mainMenu itemAtIndex:0].submenu performActionForItemAtIndex:2];
    EXPECT_EQ(settings, 1);
}

}  // namespace
}  // namespace ferrivane
