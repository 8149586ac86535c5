// The applications that run, by their windows: real ones, on a private X server.
#include "tests/linux/RunningCase.h"

namespace ferrivane {
namespace {

using test::copyProgram;
using test::Program;
using test::writeEntry;

using RunningApplicationsTest = test::RunningCase;

TEST_F(RunningApplicationsTest, SeveralWindowsAndProcessesOfOneApplicationAreOne) {
    const std::string chat = windowed("Chat");
    Program first({chat, "First", "Second"}, variables());
    ASSERT_EQ(first.readLine() + first.readLine(), "shownshown");
    EXPECT_TRUE(becomes(line("Chat", chat, first.pid())));
    Program second({chat, "Third"}, variables());
    ASSERT_EQ(second.readLine(), "shown");
    EXPECT_TRUE(becomes(line("Chat", chat, first.pid())));
    first.end();
    EXPECT_TRUE(becomes(line("Chat", chat, second.pid())));
    second.end();
    EXPECT_TRUE(becomes(""));
}

TEST_F(RunningApplicationsTest, TheyAreSortedByTheirNames) {
    const std::string zebra = windowed("Zebra");
    const std::string ant = windowed("ant");
    Program one({zebra, "One"}, variables());
    ASSERT_EQ(one.readLine(), "shown");
    Program two({ant, "Two"}, variables());
    ASSERT_EQ(two.readLine(), "shown");
    EXPECT_TRUE(becomes(line("ant", ant, two.pid()) + "\n" + line("Zebra", zebra, one.pid())));
}

TEST_F(RunningApplicationsTest, CopiesOfAnApplicationAreToldApartByThePathThatTheirLinksCarry) {
    const std::string one = copyProgram(WINDOW_STAND_IN, dir / "one" / own("chat"));
    const std::string two = copyProgram(WINDOW_STAND_IN, dir / "two" / own("chat"));
    const std::string sender = copyProgram(SENDER, dir / "three" / own("chat"));
    writeEntry(entryOf("Chat"), "Chat", one);
    Program first({one, "First"}, variables());
    ASSERT_EQ(first.readLine(), "shown");
    Program second({two, "Second"}, variables());
    ASSERT_EQ(second.readLine(), "shown");
    Program third({sender, WINDOW_STAND_IN, "--of-parent", "Third"}, variables());
    ASSERT_EQ(third.readLine(), "shown");
    const auto copy = [](const std::string& path, pid_t process) {
        return "Chat (" + own("chat") + ")|" + idOf("Chat") + "|" + path + "|" + path + "|" +
               std::to_string(process);
    };
    const std::string expected =
        copy(one, first.pid()) + "\n" + copy(two, second.pid()) + "\n" + copy(sender, third.pid());
    EXPECT_TRUE(becomes(expected));
    EXPECT_EQ(openerOf({sender}), "Chat|" + idOf("Chat") + "|" + sender);
}

TEST_F(RunningApplicationsTest, AnApplicationWithoutANameIsListedUnderItsIdentifier) {
    const std::string chat = windowed("Chat");
    Program window({chat, "Window"}, variables());
    ASSERT_EQ(window.readLine(), "shown");
    const std::string rest =
        "|" + idOf("Chat") + "|" + chat + "|" + idOf("Chat") + "|" + std::to_string(window.pid());
    writeEntry(entryOf("Chat"), "Exec=" + chat);
    EXPECT_TRUE(becomes(idOf("Chat") + rest));
    writeEntry(entryOf("Chat"), "Chat", chat, "Name[de]=Plausch");
    EXPECT_TRUE(becomes("Chat" + rest));
    EXPECT_EQ(running({{"LANGUAGE", "de"}}), "Plausch" + rest + "\n");
}

TEST_F(RunningApplicationsTest, WindowsOfNoApplicationAreNotListed) {
    const std::string chat = windowed("Chat");
    const std::string terminal = install(SENDER, "Terminal");
    Program tool({terminal, WINDOW_STAND_IN, "Tool"}, variables());
    ASSERT_EQ(tool.readLine(), "shown");
    Program anonymous({chat, "--anonymous", "Nameless"}, variables());
    ASSERT_EQ(anonymous.readLine(), "shown");
    Program known({chat, "Known"}, variables());
    ASSERT_EQ(known.readLine(), "shown");
    EXPECT_TRUE(becomes(line("Chat", chat, known.pid())));
}

TEST_F(RunningApplicationsTest, WithoutADisplayOrAWindowManagerNoWindowsAreKnown) {
    const std::string chat = windowed("Chat");
    Program window({chat, "Window"}, variables());
    ASSERT_EQ(window.readLine(), "shown");
    ASSERT_TRUE(becomes(line("Chat", chat, window.pid())));
    for (const auto& name : {std::optional<std::string>(), std::optional<std::string>(":65000"),
                             std::optional<std::string>("nonsense")}) {
        EXPECT_EQ(running({{"DISPLAY", name}}), "\n") << name.value_or("none");
    }
    manager.crash();
    EXPECT_TRUE(becomes(""));
}

}  // namespace
}  // namespace ferrivane
