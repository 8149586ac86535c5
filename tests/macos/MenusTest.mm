// The menus as AppKit holds them.
#include <gmock/gmock.h>

#include "Ferrivane/MainMenu.h"
#include "Ferrivane/MenuBar.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/Menus.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> shown(NSMenu* menu) {
    std::vector<std::string> lines;
    for (NSMenuItem* item in menu.itemArray) {
        lines.push_back(item.separatorItem ? "-"
                                           : utf8(item.title) + " [" + utf8(item.keyEquivalent) +
                                                 "] " + utf8(NSStringFromSelector(item.action)));
    }
    return lines;
}

struct MenusTest : ::testing::Test {
    std::vector<Command> performed;
    FVMenuTarget* target = [[FVMenuTarget alloc]
        initWithPerform:[this](Command command) { performed.push_back(command); }];
};

TEST_F(MenusTest, TheMainMenusItemsAreThoseOfAppKit) {
    NSMenu* const bar = menuBarOf(MainMenu::menus(), target);
    ASSERT_EQ(bar.numberOfItems, 3);
    EXPECT_THAT(shown([bar itemAtIndex:0].submenu),
                ElementsAre("About Ferrivane [] orderFrontStandardAboutPanel:", "-",
                            "Settings… [,] performItem:", "-",
                            "Hide Ferrivane [h] hide:", "Quit Ferrivane [q] terminate:"));
    EXPECT_THAT(shown([bar itemAtIndex:1].submenu),
                ElementsAre("Undo [z] undo:", "Redo [Z] redo:", "-", "Cut [x] cut:",
                            "Copy [c] copy:", "Paste [v] paste:", "Select All [a] selectAll:"));
    EXPECT_THAT(shown([bar itemAtIndex:2].submenu),
                ElementsAre("Close [w] performClose:", "Minimize [m] performMiniaturize:"));
    EXPECT_EQ(utf8([bar itemAtIndex:2].submenu.title), "Window");
}

TEST_F(MenusTest, OurItemsGoToTheTargetAndTheOthersWhereTheFocusIs) {
    NSMenu* const menu = menuOf("", MenuBar::item().items, target);
    EXPECT_THAT(shown(menu),
                ElementsAre("Settings… [,] performItem:", "-", "Edit rules.json [] performItem:",
                            "Show Log [] performItem:", "-", "Quit Ferrivane [q] terminate:"));
    EXPECT_EQ([menu itemAtIndex:0].target, target);
    EXPECT_EQ([menu itemAtIndex:5].target, nil);
}

TEST_F(MenusTest, AChosenItemPerformsItsCommand) {
    NSMenu* const menu = menuOf("", MenuBar::item().items, target);
    for (const NSInteger index : {0, 2, 3}) [target performItem:[menu itemAtIndex:index]];
    EXPECT_THAT(performed, ElementsAre(Command::settings, Command::editRules, Command::showLog));
}

}  // namespace
}  // namespace ferrivane
