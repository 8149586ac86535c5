// The applications that run, by the control groups of their units: real ones.
#include "Ferrivane/linux/Modules.h"
#include "tests/linux/ControlGroup.h"
#include "tests/linux/RunningCase.h"

namespace ferrivane {
namespace {

using test::copyProgram;
using test::Program;
using test::writeEntry;

using RunningUnitsTest = test::RunningCase;

constexpr const char* kNoGroup =
    "no control group can be made below that of this process; it takes the unified hierarchy, "
    "mounted and writable";

TEST_F(RunningUnitsTest, AnApplicationInAUnitOfItsOwnNeedsNoWindow) {
    const test::ControlGroup unit("app-gnome-" + idOf("Chat") + "-1.scope");
    const test::ControlGroup autostarted("app-" + idOf("Panel") + "@autostart.service");
    const test::ControlGroup unknown("app-" + idOf("Unknown") + "-1.scope");
    const test::ControlGroup service("dbus.service");
    ASSERT_TRUE(unit.isThere() && autostarted.isThere() && unknown.isThere() && service.isThere())
        << kNoGroup;
    const std::string chat = windowed("Chat");
    const std::string panel = windowed("Panel");
    const Program older(unit.running({chat}), variables());
    ASSERT_TRUE(becomes(line("Chat", chat, older.pid())));
    const Program icon(autostarted.running({panel}), variables());
    const Program other(unknown.running({WINDOW_STAND_IN}), variables());
    const Program daemon(service.running({chat}), variables());
    const std::string both =
        line("Chat", chat, older.pid()) + "\n" + line("Panel", panel, icon.pid());
    EXPECT_TRUE(becomes(both));
    Program younger({chat, "Window"}, variables());
    ASSERT_EQ(younger.readLine(), "shown");
    EXPECT_TRUE(becomes(both)) << "still by its oldest process";
    EXPECT_EQ(running({{"DISPLAY", std::nullopt}}), both + "\n");
}

TEST_F(RunningUnitsTest, WhatNoMenuShowsIsListedOnlyForItsWindow) {
    const test::ControlGroup unit("app-" + idOf("Daemon") + "@autostart.service");
    const test::ControlGroup other("app-" + idOf("Chat") + "-1.scope");
    ASSERT_TRUE(unit.isThere() && other.isThere()) << kNoGroup;
    const std::string path = windowed("Daemon");
    writeEntry(entryOf("Daemon"), "Daemon", path, "NoDisplay=true");
    const std::string chat = windowed("Chat");
    const Program daemon(unit.running({path}), variables());
    const Program application(other.running({chat}), variables());
    const std::string shown = line("Chat", chat, application.pid());
    ASSERT_TRUE(becomes(shown));
    Program window(unit.running({path, "Window"}), variables());
    ASSERT_EQ(window.readLine(), "shown");
    EXPECT_TRUE(test::waitUntil([&] { return running().find("Daemon|") != std::string::npos; }));
}

TEST_F(RunningUnitsTest, WhatATerminalRunsIsTheTerminals) {
    const test::ControlGroup unit("app-" + idOf("Terminal") + "-1.scope");
    ASSERT_TRUE(unit.isThere()) << kNoGroup;
    const std::string terminal = install(SENDER, "Terminal");
    const std::string chat = windowed("Chat");
    Program tool(unit.running({terminal, "sh", "-c", "\"$0\" Tool; true", WINDOW_STAND_IN}),
                 variables());
    ASSERT_EQ(tool.readLine(), "shown");
    Program started(unit.running({chat, "Window"}), variables());
    ASSERT_EQ(started.readLine(), "shown");
    EXPECT_TRUE(
        becomes(line("Chat", chat, started.pid()) + "\n" + line("Terminal", terminal, tool.pid())));
    EXPECT_EQ(openerOf(unit.running({terminal, "sh", "-c", "\"$@\"; true", "sh"})),
              "Terminal|" + idOf("Terminal") + "|" + terminal);
}

TEST_F(RunningUnitsTest, AShellThatStartsAnApplicationIsNeitherACopyNorAnotherApplication) {
    const test::ControlGroup unit("app-" + idOf("Chat") + "-1.scope");
    ASSERT_TRUE(unit.isThere()) << kNoGroup;
    const std::string chat = copyProgram(WINDOW_STAND_IN, dir / "lib" / own("chat"));
    const std::string sender = copyProgram(SENDER, dir / "lib/sender" / own("chat"));
    const auto wrapper =
        test::writeScript(dir / "bin" / own("chat"), "#!/usr/bin/env bash\n\"$@\"\ntrue\n");
    writeEntry(entryOf("Chat"), "Chat", wrapper);
    writeEntry(entryOf("Editor"), "Editor", "bash -c 'editor %u'");
    Program shell(unit.running({wrapper, chat, "Window"}), variables());
    ASSERT_EQ(shell.readLine(), "shown");
    const auto isListed = [&] {
        const std::string text = running();
        return text.starts_with("Chat|" + idOf("Chat") + "|" + chat + "|" + idOf("Chat") + "|") &&
               text.find('\n') + 1 == text.size();
    };
    EXPECT_TRUE(test::waitUntil(isListed)) << running();
    shell.end();
    const std::string opener = openerOf(unit.running({wrapper, sender}));
    EXPECT_EQ(opener, "Chat|" + idOf("Chat") + "|" + sender);

    const Program alone(unit.running({wrapper, "cat"}), variables());
    EXPECT_TRUE(test::waitUntil([&] { return running() != "\n"; }));
    EXPECT_TRUE(running().starts_with("Chat|" + idOf("Chat") + "|" + wrapper.string() + "|"))
        << running();
}

TEST_F(RunningUnitsTest, AnApplicationThatHasEndedIsNotListed) {
    const test::ControlGroup unit("app-" + idOf("Chat") + "-1.scope");
    ASSERT_TRUE(unit.isThere()) << kNoGroup;
    const std::string chat = windowed("Chat");
    Program ended(unit.running({chat}), variables());
    ASSERT_TRUE(becomes(line("Chat", chat, ended.pid())));
    ended.closeInput();
    ASSERT_TRUE(test::waitUntil([&] { return test::isGone(ended.pid()); }));
    EXPECT_EQ(running(), "\n") << "though nobody has asked for its exit status yet";
    const Program other(unit.running({chat}), variables());
    EXPECT_TRUE(becomes(line("Chat", chat, other.pid())));
}

TEST_F(RunningUnitsTest, ThisVeryProgramIsNeverListed) {
    const test::ControlGroup terminal("app-" + idOf("Terminal") + "-1.scope");
    const test::ControlGroup ours("app-com.hollowmere.ferrivane@autostart.service");
    ASSERT_TRUE(terminal.isThere() && ours.isThere()) << kNoGroup;
    const std::string chat = windowed("Chat");
    install(SENDER, "Terminal");
    writeEntry(dir / "applications/com.hollowmere.ferrivane.desktop", "Ferrivane",
               dir / "other/Ferrivane");
    // Its windows are those of a process whose file was replaced, as an upgrade does.
    const auto program = dir / "bin" / own("Program");
    writeEntry(entryOf("Program"), "Program", copyProgram(WINDOW_STAND_IN, program));
    Program window(terminal.running({program, "Settings"}), variables());
    ASSERT_EQ(window.readLine(), "shown");
    const Program agent(
        ours.running({copyProgram(WINDOW_STAND_IN, dir / "other/Ferrivane"), "Own"}), variables());
    Program other({chat, "Window"}, variables());
    ASSERT_EQ(other.readLine(), "shown");
    const std::string rest = line("Chat", chat, other.pid());
    ASSERT_TRUE(becomes(rest + "\n" + line("Program", program, window.pid())))
        << "for another program it is an application";

    std::filesystem::remove(program);
    copyProgram(ADAPTER_PROBE, program);
    const std::string module = Modules::desktop();
    std::filesystem::create_symlink(std::filesystem::path(ADAPTER_PROBE).parent_path() / module,
                                    dir / "bin" / module);
    EXPECT_EQ(running({}, program), rest + "\n");
}

}  // namespace
}  // namespace ferrivane
