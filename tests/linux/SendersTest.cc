// Who sent a link, asked from a real process below real parents.
#include <gtest/gtest.h>

#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::copyProgram;
using test::writeEntry;
using test::writeScript;
using Words = std::vector<std::string>;

// Applications in a folder of their own: chat and terminal are installed, tool is a mere program.
class Senders : public ::testing::Test {
  protected:
    Senders() {
        for (const char* name : {"chat", "terminal", "tool"}) copyProgram(SENDER, bin / name);
        writeEntry(applications / "org.example.Chat.desktop", "Chat", path("chat") + " %U");
        writeEntry(applications / "org.example.Terminal.desktop", "Terminal", path("terminal"));
    }

    std::string path(const char* program) const { return bin / program; }

    // A script of this interpreter that runs its arguments as a child and waits.
    std::filesystem::path perlScript(const char* name) const {
        return writeScript(bin / name, "#!/usr/bin/perl\nexit(system(@ARGV) >> 8);\n");
    }

    // What a link's process says that the last of these programs started, each being started by
    // the one before.
    std::string openerBehind(Words programs, const test::Variables& more = {}) const {
        programs.insert(programs.end(), {ADAPTER_PROBE, "opener"});
        test::Variables variables{{"XDG_DATA_HOME", dir.path().string()}};
        variables.insert(more.begin(), more.end());
        const std::string line = test::outputOf(programs, variables);
        return line.substr(0, line.find('\n'));
    }

    const test::TempDir dir;
    const std::filesystem::path applications = dir / "applications";
    const std::filesystem::path bin = dir / "bin";
    const std::string chat = "Chat|org.example.Chat|" + path("chat");
    const std::string terminal = "Terminal|org.example.Terminal|" + path("terminal");
    const std::string tool = "-|-|" + path("tool");
};

TEST_F(Senders, Chains) {
    const std::string passOn = "\"$@\"; exit $?";
    writeScript(bin / "xdg-open", "#!/bin/sh\n" + passOn + "\n");
    writeScript(bin / "report.sh", "#!/bin/sh\n" + passOn + "\n");
    perlScript("report.pl");
    const struct {
        const char* name;
        Words programs;
        std::string opener;
    } rows[] = {
        {"an application", {path("chat")}, chat},
        {"an application that uses xdg-open", {path("chat"), path("xdg-open")}, chat},
        {"several that only pass it on",
         {path("chat"), path("xdg-open"), "env", "A=b", "timeout", "60", "nohup", "xargs"},
         chat},
        {"a start of this very program between", {path("chat"), ADAPTER_PROBE, "run"}, chat},
        {"a shell in a terminal", {path("terminal"), "sh", "-c", passOn, "sh"}, terminal},
        {"another shell in it", {path("terminal"), "bash", "-c", passOn, "bash"}, terminal},
        {"a shell script in a terminal", {path("terminal"), "sh", path("report.sh")}, terminal},
        {"a script of another language in it", {path("terminal"), path("report.pl")}, terminal},
        {"a program in a terminal",
         {path("terminal"), "sh", "-c", passOn, "sh", path("tool")},
         terminal},
        {"an application started from a terminal",
         {path("terminal"), "sh", "-c", passOn, "sh", path("chat")},
         chat},
        {"a helper process of an application", {path("chat"), path("tool")}, chat},
        {"a helper of a helper that uses xdg-open",
         {path("chat"), path("tool"), path("tool"), path("xdg-open")},
         chat},
        {"a program without an entry", {path("tool")}, tool},
        {"the lower of two", {path("tool"), path("tool"), path("xdg-open")}, tool},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        // Its ancestors are those of the test from here on: nothing of the table is among them.
        EXPECT_EQ(openerBehind(row.programs), row.opener);
    }
}

TEST_F(Senders, LaunchersPassALinkOnForSomebodyElse) {
    for (const char* name : {"gio",       "gvfs-open",     "kde-open",    "kde-open5",
                             "kde-open6", "kioclient",     "kioclient5",  "kfmclient",
                             "exo-open",  "gtk-launch",    "gtk4-launch", "run-mailcap",
                             "mimeopen",  "x-www-browser", "www-browser", "sensible-browser",
                             "zsh",       "fish",          "sudo",        "gdbus",
                             "dbus-send", "busctl",        "systemd-run", "flatpak-spawn",
                             "setsid"}) {
        copyProgram(SENDER, bin / name);
        EXPECT_EQ(openerBehind({path("chat"), path(name)}), chat) << name;
    }
}

TEST_F(Senders, BehindTheSessionNobodySentIt) {
    for (const char* name :
         {"systemd", "dbus-daemon", "dbus-broker", "dbus-broker-launch", "gnome-session-binary",
          "startplasma-x11", "xfce4-session", "xdg-desktop-portal", "xdg-desktop-portal-gtk"}) {
        copyProgram(SENDER, bin / name);
        EXPECT_EQ(openerBehind({path("chat"), path(name)}), "nobody") << name;
        EXPECT_EQ(openerBehind({path("chat"), path(name), path("tool")}), tool) << name;
    }
}

TEST_F(Senders, ANameThatOnlyBeginsLikeAPartOfTheSession) {
    for (const char* name : {"initiative", "logins", "systemdoctor"}) {
        copyProgram(SENDER, bin / name);
        writeEntry(applications / (std::string(name) + ".desktop"), "An application", path(name));
        EXPECT_EQ(openerBehind({path(name)}),
                  "An application|" + std::string(name) + "|" + path(name));
    }
}

TEST_F(Senders, AScriptWithAnEntryOfItsOwn) {
    const std::string script = perlScript("notes");
    writeEntry(applications / "org.example.Notes.desktop", "Notes", script + " %u");
    const std::string notes = "Notes|org.example.Notes|" + script;
    EXPECT_EQ(openerBehind({script}), notes);
    EXPECT_EQ(openerBehind({"perl", script}), notes);
    EXPECT_EQ(openerBehind({path("terminal"), script}), notes);
    EXPECT_EQ(openerBehind({"sh", "-c", "cd \"$0\" && \"$@\"; exit $?", bin, "perl", "./notes"}),
              notes)
        << "by a relative path";
    EXPECT_EQ(openerBehind({copyProgram("/usr/bin/perl", bin / "gjs-console"), script}), notes)
        << "by an interpreter of several words";
}

TEST_F(Senders, AnInterpretersEntryIsNotItsScripts) {
    writeEntry(applications / "perl.desktop", "Perl", "/usr/bin/perl");
    EXPECT_EQ(openerBehind({perlScript("report.pl")}), "-|-|/usr/bin/perl");
    EXPECT_EQ(openerBehind({path("chat"), "perl", "-e", "exit(system(@ARGV) >> 8)"}), chat);
}

TEST_F(Senders, PythonsModuleForOpeningLinksPassesThemOn) {
    const std::string browser = std::string(ADAPTER_PROBE) + " opener %s";
    const std::string line =
        test::outputOf({path("chat"), "python3", "-m", "webbrowser", "https://example.org/"},
                       {{"XDG_DATA_HOME", dir.path().string()}, {"BROWSER", browser}});
    EXPECT_EQ(line.substr(0, line.find('\n')), chat);
}

TEST_F(Senders, TwoCopiesOfOneApplication) {
    const std::string other = copyProgram(SENDER, dir / "other/chat");
    EXPECT_EQ(openerBehind({path("chat")}), chat);
    EXPECT_EQ(openerBehind({other}), "Chat|org.example.Chat|" + other);
}

TEST_F(Senders, AnApplicationThatWasUpgradedMeanwhile) {
    const std::string upgrade = "rm \"$0\" && cp \"$1\" \"$0\" && shift && \"$@\"; exit $?";
    EXPECT_EQ(openerBehind({path("chat"), "sh", "-c", upgrade, path("chat"), SENDER}), chat);
}

TEST_F(Senders, AnEntryWithoutAName) {
    test::writeEntry(applications / "org.example.Chat.desktop", "Exec=" + path("chat"));
    EXPECT_EQ(openerBehind({path("chat")}), "org.example.Chat|org.example.Chat|" + path("chat"));
}

TEST_F(Senders, TheEntryThatALauncherNamedForTheProcess) {
    // A process says of itself, once it runs the program, what GIO says of those it starts.
    const std::string entry =
        writeEntry(applications / "org.example.Wrapped.desktop", "Wrapped", "wrapper-not-here");
    const std::string asLaunched =
        "GIO_LAUNCHED_DESKTOP_FILE=$0 GIO_LAUNCHED_DESKTOP_FILE_PID=$$; "
        "export GIO_LAUNCHED_DESKTOP_FILE GIO_LAUNCHED_DESKTOP_FILE_PID; exec \"$@\"";
    const std::string wrapped = "Wrapped|org.example.Wrapped|" + path("tool");
    EXPECT_EQ(openerBehind({"sh", "-c", asLaunched, entry, path("tool")}), wrapped);
    EXPECT_EQ(openerBehind({"sh", "-c", asLaunched, entry, path("chat"), path("tool")}), chat)
        << "what the process inherited says nothing of it, and its own entry counts first";
    EXPECT_EQ(openerBehind({"sh", "-c", asLaunched, dir / "no.desktop", path("tool")}), tool);
    EXPECT_EQ(openerBehind({path("tool")}, {{"GIO_LAUNCHED_DESKTOP_FILE", entry}}), tool);
}

TEST_F(Senders, AnApplicationInASingleFile) {
    const std::string mounted = copyProgram(SENDER, dir / "mount/usr/bin/drawing");
    const std::string image = writeScript(dir / "Drawing.AppImage", "");
    const test::Variables variables{{"APPIMAGE", image}, {"APPDIR", dir / "mount"}};
    EXPECT_EQ(openerBehind({mounted}, variables), "-|-|" + image);
    writeEntry(applications / "drawing.desktop", "Drawing", image + " %U");
    EXPECT_EQ(openerBehind({mounted}, variables), "Drawing|drawing|" + image);
    EXPECT_EQ(openerBehind({path("tool")}, variables), tool)
        << "a program outside the mounted folder only inherited the variables";
}

TEST_F(Senders, TheStartUpIdOfTheSession) {
    const test::Program running({path("chat"), "cat"});
    const std::string id = "chat-" + std::to_string(running.pid()) + "-host-x-0_TIME5";
    copyProgram(SENDER, bin / "xdg-desktop-portal");
    EXPECT_EQ(openerBehind({path("xdg-desktop-portal")}, {{"DESKTOP_STARTUP_ID", id}}), chat);
    EXPECT_EQ(openerBehind({path("terminal")}, {{"DESKTOP_STARTUP_ID", id}}), terminal)
        << "a witness only where the parents tell nothing";
}

}  // namespace
}  // namespace ferrivane
