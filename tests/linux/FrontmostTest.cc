// The front window, on a private X server with a window manager.
#include <gtest/gtest.h>
#include <unistd.h>

#include "Ferrivane/linux/LinuxFrontmost.h"
#include "tests/linux/Display.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::Display;
using test::outputOf;
using test::Program;
using test::Variables;
using test::WindowManager;

class FrontmostTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(display.isThere()) << "Xvfb does not run"; }

    std::string front(const Variables& more = {}) const { return ask({"front"}, more); }
    std::string activate(pid_t process, const Variables& more = {}) const {
        return ask({"activate", std::to_string(process)}, more);
    }
    std::string ask(std::vector<std::string> question, const Variables& more) const {
        Variables variables = more;
        variables.merge(display.variables());
        variables.merge(Variables{{"XDG_DATA_HOME", dir.path().string()}});
        question.insert(question.begin(), ADAPTER_PROBE);
        const std::string line = outputOf(question, variables);
        return line.substr(0, line.find('\n'));
    }
    // Waits for it, because window managers take their time.
    bool becomesFront(const std::string& expected) const {
        return test::waitUntil([&] { return front() == expected; });
    }
    static std::string described(const Program& window, const std::string& name) {
        return std::to_string(window.pid()) + "|" + name;
    }

    const test::TempDir dir;
    const Display display;
};

TEST(Frontmost, OpeningToActivateOnlySucceeds) {
    const DesktopEntries entries{{}};
    LinuxFrontmost frontmost(entries);
    int count = 0;
    frontmost.open("/nowhere/x.desktop", [&](const auto& outcome) {
        EXPECT_TRUE(outcome);
        ++count;
    });
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(frontmost.activateHandedOver(::getpid()));
}

TEST_F(FrontmostTest, TheActiveWindowAndBringingTheLowerOneUp) {
    const WindowManager manager(display);
    ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    Program lower({WINDOW_STAND_IN, "Lower"}, display.variables());
    ASSERT_EQ(lower.readLine(), "shown");
    EXPECT_TRUE(becomesFront(described(lower, "Lower"))) << front();
    Program upper({WINDOW_STAND_IN, "Upper"}, display.variables());
    ASSERT_EQ(upper.readLine(), "shown");
    EXPECT_TRUE(becomesFront(described(upper, "Upper"))) << front();

    EXPECT_EQ(activate(lower.pid()), "asked");
    EXPECT_TRUE(becomesFront(described(lower, "Lower"))) << front();
    EXPECT_EQ(activate(upper.pid()), "asked");
    EXPECT_TRUE(becomesFront(described(upper, "Upper"))) << front();
    EXPECT_EQ(activate(upper.pid()), "asked") << "it is in front already";
    EXPECT_EQ(activate(1), "not asked") << "a process without a window";

    upper.end();
    EXPECT_TRUE(becomesFront(described(lower, "Lower"))) << front();
    lower.end();
    EXPECT_TRUE(becomesFront("-|-")) << "no window at all, which is known: " << front();
}

TEST_F(FrontmostTest, OfAProcessTheTopmostWindow) {
    const WindowManager manager(display);
    ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    Program several({WINDOW_STAND_IN, "First", "Second"}, display.variables());
    ASSERT_EQ(several.readLine() + several.readLine(), "shownshown");
    EXPECT_TRUE(becomesFront(described(several, "Second"))) << front();
    Program other({WINDOW_STAND_IN, "Other"}, display.variables());
    ASSERT_EQ(other.readLine(), "shown");
    EXPECT_TRUE(becomesFront(described(other, "Other"))) << front();
    EXPECT_EQ(activate(several.pid()), "asked");
    EXPECT_TRUE(becomesFront(described(several, "Second"))) << front();
}

TEST_F(FrontmostTest, TheNameIsThatOfTheApplication) {
    const WindowManager manager(display);
    ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    const std::string chat = test::copyProgram(WINDOW_STAND_IN, dir / "bin/chat");
    test::writeEntry(dir / "applications/org.example.Chat.desktop", "Chat", chat);
    Program window({chat, "chat-window"}, display.variables());
    ASSERT_EQ(window.readLine(), "shown");
    EXPECT_TRUE(becomesFront(described(window, "Chat"))) << front();
    Program anonymous({WINDOW_STAND_IN, "--anonymous", "Nameless"}, display.variables());
    ASSERT_EQ(anonymous.readLine(), "shown");
    EXPECT_TRUE(becomesFront("-|Nameless")) << front();
    EXPECT_EQ(activate(anonymous.pid()), "not asked");
}

TEST_F(FrontmostTest, AProgramIsNotNamedAfterWhoStartedIt) {
    const WindowManager manager(display);
    ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    const std::string terminal = test::copyProgram(SENDER, dir / "bin/terminal");
    test::writeEntry(dir / "applications/org.example.Terminal.desktop", "Terminal", terminal);
    Program window({terminal, WINDOW_STAND_IN, "Tool"}, display.variables());
    ASSERT_EQ(window.readLine(), "shown");
    EXPECT_TRUE(test::waitUntil([&] { return front().ends_with("|Tool"); })) << front();
}

TEST_F(FrontmostTest, WithoutAWindowManagerItIsUnknown) {
    Program window({WINDOW_STAND_IN, "Lonely"}, display.variables());
    ASSERT_EQ(window.readLine(), "shown");
    EXPECT_EQ(front(), "unknown");
    EXPECT_EQ(activate(window.pid()), "not asked");
}

TEST_F(FrontmostTest, WhatADeadWindowManagerLeftBehindIsNotBelieved) {
    const WindowManager manager(display);
    ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    Program window({WINDOW_STAND_IN, "Lonely"}, display.variables());
    ASSERT_EQ(window.readLine(), "shown");
    EXPECT_TRUE(becomesFront(described(window, "Lonely"))) << front();
    manager.crash();
    EXPECT_TRUE(becomesFront("unknown")) << front();
    EXPECT_EQ(activate(window.pid()), "not asked");
}

TEST_F(FrontmostTest, WhereNobodyTellsItIsUnknown) {
    const WindowManager manager(display);
    ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    Program window({WINDOW_STAND_IN, "Window"}, display.variables());
    ASSERT_EQ(window.readLine(), "shown");
    EXPECT_TRUE(becomesFront(described(window, "Window"))) << front();
    const struct {
        const char* name;
        Variables variables;
    } rows[] = {
        {"no display", {{"DISPLAY", std::nullopt}}},
        {"an empty display", {{"DISPLAY", ""}}},
        {"a display that does not exist", {{"DISPLAY", ":65000"}}},
        {"a display that is none", {{"DISPLAY", "nonsense"}}},
        {"a screen that does not exist", {{"DISPLAY", *display.variables()["DISPLAY"] + ".7"}}},
        {"a Wayland session", {{"WAYLAND_DISPLAY", "wayland-0"}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(front(row.variables), "unknown");
        EXPECT_EQ(activate(window.pid(), row.variables), "not asked");
    }
}

}  // namespace
}  // namespace ferrivane
