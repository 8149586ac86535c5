// The menus, word for word.
#include <gmock/gmock.h>

#include "Ferrivane/MainMenu.h"
#include "Ferrivane/MenuBar.h"
#include "core/Config.h"
#include "tests/app/AppTest.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> shown(const std::vector<MenuItem>& items) {
    std::vector<std::string> lines;
    for (const MenuItem& item : items) {
        std::string line = item.command == Command::separator ? "-" : item.title;
        if (!item.key.empty()) line += " [" + item.key + "]";
        lines.push_back(line);
    }
    return lines;
}

TEST(MainMenuTest, Contents) {
    const auto menus = MainMenu::menus();
    ASSERT_EQ(menus.size(), 3U);
    EXPECT_EQ(menus[0].title, "Ferrivane");
    EXPECT_THAT(shown(menus[0].items), ElementsAre("About Ferrivane", "-", "Settings… [,]", "-",
                                                   "Hide Ferrivane [h]", "Quit Ferrivane [q]"));
    EXPECT_EQ(menus[1].title, "Edit");
    EXPECT_THAT(shown(menus[1].items), ElementsAre("Undo [z]", "Redo [Z]", "-", "Cut [x]",
                                                   "Copy [c]", "Paste [v]", "Select All [a]"));
    EXPECT_EQ(menus[2].title, "Window");
    EXPECT_THAT(shown(menus[2].items), ElementsAre("Close [w]", "Minimize [m]"));
}

class MenuBarTest : public test::AppTest {
  protected:
    MenuBar menuBar{fake.userInterface, log, [this] { fake.mainLoop.stop(); }};
};

TEST_F(MenuBarTest, Contents) {
    const StatusItem item = MenuBar::item();
    EXPECT_EQ(item.symbol, "arrow.triangle.branch");
    EXPECT_EQ(item.accessibilityDescription, "Ferrivane");
    EXPECT_EQ(item.toolTip, "Ferrivane");
    EXPECT_THAT(shown(item.items), ElementsAre("Settings… [,]", "-", "Edit rules.json", "Show Log",
                                               "-", "Quit Ferrivane [q]"));
}

TEST_F(MenuBarTest, ShowingItTwiceLeavesOneIcon) {
    menuBar.setVisible(true);
    menuBar.setVisible(true);
    EXPECT_THAT(fake.calls.texts(), ElementsAre("userInterface.showStatusItem"));
    menuBar.setVisible(false);
    menuBar.setVisible(false);
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("userInterface.showStatusItem", "userInterface.removeStatusItem"));
}

TEST_F(MenuBarTest, HidingWithoutAnIconDoesNothing) {
    menuBar.setVisible(false);
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
}

TEST_F(MenuBarTest, EveryItem) {
    menuBar.setVisible(true);
    const auto& perform = fake.userInterface.performOfStatusItem;
    perform(Command::settings);
    int settings = 0;
    menuBar.onSettings = [&] { ++settings; };
    perform(Command::settings);
    EXPECT_EQ(settings, 1) << "only once there is somebody to tell";
    fake.calls.clear();
    perform(Command::editRules);
    perform(Command::showLog);
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("userInterface.openDocument " + Config::fileURL().string(),
                            "userInterface.openDocument " + log.fileURL.string()));
    EXPECT_FALSE(fake.mainLoop.isStopped());
    perform(Command::quit);
    EXPECT_TRUE(fake.mainLoop.isStopped());
}

TEST_F(MenuBarTest, TheLogIsShownWithItsLastLine) {
    for (int line = 0; line < 1000; ++line) log.info(std::to_string(line));
    menuBar.showLog();
    EXPECT_EQ(test::linesWithoutTime(log.fileURL).back(), "[INFO] 999");
}

TEST_F(MenuBarTest, AFileThatNobodyOpensIsNamedInTheLog) {
    fake.userInterface.opened = std::unexpected(PlatformError{"no application"});
    menuBar.showLog();
    EXPECT_THAT(newLogLines(),
                ElementsAre("[ERROR] cannot open " + log.fileURL.string() + ": no application"));
}

}  // namespace
}  // namespace ferrivane
