// Who sent a link, for given processes, control groups and start-up ids.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Senders.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::copyProgram;
using test::Program;
using test::writeEntry;

std::string described(const std::optional<Opener>& opener) {
    if (!opener) return "nobody";
    return opener->name.value_or("-") + "|" + opener->bundleId.value_or("-") + "|" +
           opener->path.value_or("-");
}

class SendersProcesses : public ::testing::Test {
  protected:
    SendersProcesses() {
        copyProgram(SENDER, dir / "bin/chat");
        copyProgram(SENDER, dir / "bin/tool");
        copyProgram(SENDER, dir / "bin/own");
        writeEntry(applications / "org.example.Chat.desktop", "Chat", dir / "bin/chat");
    }

    std::string opener(pid_t sender, const std::string& controlGroup = "",
                       const std::string& startupId = "") const {
        return described(Senders::opener({sender, controlGroup, startupId}, entries));
    }

    const test::TempDir dir;
    const std::filesystem::path applications = dir / "applications";
    const DesktopEntries entries{{applications}};
    const std::string chat = "Chat|org.example.Chat|" + (dir / "bin/chat").string();
    const std::string tool = "-|-|" + (dir / "bin/tool").string();
};

TEST_F(SendersProcesses, WhereThisProcessComesFrom) {
    const test::ScopedVariable none("DESKTOP_STARTUP_ID", std::nullopt);
    const auto origin = Senders::ownOrigin();
    EXPECT_EQ(origin.sender, ::getppid());
    EXPECT_EQ(origin.controlGroup, Processes::controlGroup(::getpid()));
    EXPECT_EQ(origin.startupId, "");
    const test::ScopedVariable some("DESKTOP_STARTUP_ID", "chat-1-host-0_TIME1");
    EXPECT_EQ(Senders::ownOrigin().startupId, "chat-1-host-0_TIME1");
}

TEST_F(SendersProcesses, NoProcess) {
    for (const pid_t process : {0, 1, -1, 2147483647}) EXPECT_EQ(opener(process), "nobody");
}

TEST_F(SendersProcesses, AProcessThatIsGone) {
    Program program({dir / "bin/chat", "cat"});
    const pid_t process = program.pid();
    EXPECT_EQ(opener(process), chat);
    program.end();
    EXPECT_EQ(opener(process), "nobody");
}

TEST_F(SendersProcesses, AProcessOfThisProgramIsNoSender) {
    const test::Child child([] { return ::pause(); });
    const std::string found = opener(child.pid());
    EXPECT_EQ(found.find(Processes::executable(::getpid())->string()), std::string::npos) << found;
}

TEST_F(SendersProcesses, TheControlGroupIsTheWitnessWhereTheParentsTellNothing) {
    writeEntry(applications / "gnome-mail.desktop", "Mail", dir / "bin/mail-not-here");
    writeEntry(applications / "org.example.Quiet.desktop", "Quiet", dir / "bin/tool",
               "NoDisplay=true");
    writeEntry(applications / "chat_chat.desktop", "Chat in a Snap", dir / "bin/chat");
    writeEntry(applications / "org.example.Box.desktop", "Box", dir / "bin/tool", "X-Flatpak=x");
    writeEntry(applications / "org.example.Gone.desktop", "Hidden=true");
    writeEntry(applications / "com.hollowmere.ferrivane.desktop", "Ferrivane", dir / "bin/own");
    const std::string slice = "/user.slice/user-1000.slice/user@1000.service/app.slice/";
    const std::string in = applications.string() + "/";
    const struct {
        const char* name;
        std::string group;
        std::string opener;
    } rows[] = {
        {"an application", slice + "app-gnome-org.example.Chat-1.scope", chat},
        {"an id that begins like a launcher", slice + "app-gnome-mail-1.scope",
         "Mail|gnome-mail|" + in + "gnome-mail.desktop"},
        {"one that is not shown in menus", slice + "app-org.example.Quiet-1.scope",
         "Quiet|org.example.Quiet|" + (dir / "bin/tool").string()},
        {"a Snap", slice + "snap.chat.chat-8a6d9f0c-1b2e-4c3d-9e8f-0123456789ab.scope",
         "Chat in a Snap|chat_chat|" + (dir / "bin/chat").string()},
        {"a Flatpak", slice + "app-flatpak-org.example.Box-1.scope",
         "Box|org.example.Box|" + in + "org.example.Box.desktop"},
        {"one that is not installed", slice + "app-org.example.Unknown-1.scope", "nobody"},
        {"the unit that a desktop made for this program",
         slice + "app-com.hollowmere.ferrivane@1f.service", "nobody"},
        {"one that was deleted", slice + "app-org.example.Gone-1.scope", "nobody"},
        {"one with a slash", slice + "app-..\\x2fapplications\\x2forg.example.Chat-1.scope",
         "nobody"},
        {"the bus", "/user.slice/user@1000.service/session.slice/dbus.service", "nobody"},
        {"none", "", "nobody"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(opener(0, row.group), row.opener);
    }
    const Program program({dir / "bin/chat", "cat"});
    EXPECT_EQ(opener(program.pid(), slice + "app-gnome-mail-1.scope"), chat)
        << "a living application comes first";
}

TEST_F(SendersProcesses, AProgramStartedUnderTheNameOfALinkToIt) {
    copyProgram(SENDER, dir / "bin/x11-writer");
    std::filesystem::create_symlink(dir / "bin/x11-writer", dir / "alternative");
    std::filesystem::create_symlink(dir / "alternative", dir / "bin/text");
    writeEntry(applications / "org.example.Text.desktop", "Text", dir / "bin/text");
    const std::string path = dir / "bin/x11-writer";
    const auto started = [&](const std::filesystem::path& name) {
        const Program program({name, "cat"});
        return opener(program.pid());
    };
    EXPECT_EQ(started(path), "-|-|" + path);
    EXPECT_EQ(started(dir / "bin/text"), "Text|org.example.Text|" + path);
    const test::ScopedVariable folders("PATH", (dir / "bin").string() + ":/usr/bin:/bin");
    EXPECT_EQ(started("text"), "Text|org.example.Text|" + path);
}

TEST_F(SendersProcesses, ANameThatAProgramOnlyClaims) {
    const std::string claimed = dir / "bin/chat";
    Program liar({"bash", "-c",
                  "exec -a '" + claimed + "' '" + (dir / "bin/tool").string() +
                      "' sh -c 'echo ready; exec cat'"});
    ASSERT_EQ(liar.readLine(), "ready");
    ASSERT_EQ(Processes::arguments(liar.pid()).at(0), claimed);
    EXPECT_EQ(opener(liar.pid()), tool);
}

TEST_F(SendersProcesses, AStartUpIdThatNamesALiveProcess) {
    const Program program({dir / "bin/chat", "cat"});
    const std::string pid = std::to_string(program.pid());
    const Program other({dir / "bin/tool", "cat"});
    Program ended({dir / "bin/chat", "cat"});
    const std::string dead = std::to_string(ended.pid());
    ended.end();
    const struct {
        const char* name;
        std::string id;
        std::string opener;
    } rows[] = {
        {"as GTK writes it", "chat-" + pid + "-host-chat-0_TIME123", chat},
        {"a program with dashes", "my-old-chat-" + pid + "-host-name-0_TIME123", chat},
        {"a path at its end", "gtksnd-" + pid + "-vm-/usr/bin/x-0_TIME0", chat},
        {"a process that is gone", "chat-" + dead + "-host-chat-0_TIME123", "nobody"},
        {"a process without an application", "x-" + std::to_string(other.pid()) + "-h-0_TIME1",
         "nobody"},
        {"the first process", "x-1-host-0_TIME1", "nobody"},
        {"no process", "x-0-host-0_TIME1", "nobody"},
        {"a program with a dash at its end", "x--" + pid + "-host", chat},
        {"too large a number", "x-99999999999999999999-host-0_TIME1", "nobody"},
        {"KDE's form", "host;1700000000;123456;" + pid + "_TIME5", "nobody"},
        {"a number at its end", "chat-" + pid, "nobody"},
        {"a number with something behind it", "chat-" + pid + "x-host", "nobody"},
        {"garbage", "--- -\n-x-\xFF-", "nobody"},
        {"a dash", "-", "nobody"},
        {"nothing", "", "nobody"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(opener(0, "", row.id), row.opener);
    }
    EXPECT_EQ(opener(other.pid(), "", rows[0].id), chat) << "it tells more than a mere program";
    writeEntry(applications / "com.hollowmere.ferrivane.desktop", "Ferrivane", dir / "bin/own");
    EXPECT_EQ(opener(0, "/app.slice/app-com.hollowmere.ferrivane@1f.service", rows[0].id), chat)
        << "and more than a unit of this very program";
    EXPECT_EQ(opener(other.pid(), "", rows[3].id), tool) << "but not when its process is gone";
}

TEST_F(SendersProcesses, AStartUpIdOfAProcessThatHasEnded) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ASSERT_TRUE(test::waitUntil([&] { return test::isGone(child); }));
    EXPECT_EQ(opener(0, "", "chat-" + std::to_string(child) + "-host-0_TIME1"), "nobody");
    ::waitpid(child, nullptr, 0);
}

TEST_F(SendersProcesses, InsideASandboxTheRootNamesTheApplication) {
    const auto root = dir / "root";
    std::filesystem::create_directory(root);
    Program sandbox({SANDBOXED, root});
    ASSERT_EQ(sandbox.readLine(), "ready");
    EXPECT_EQ(opener(sandbox.pid()), std::string("-|-|") + SANDBOXED) << "a root that names nobody";
    test::writeText(root / ".flatpak-info", "[Instance]\nname=no\n");
    EXPECT_EQ(opener(sandbox.pid()), std::string("-|-|") + SANDBOXED);
    test::writeText(root / ".flatpak-info",
                    "[Application]\nruntime=x\nname=org.example.Box\n[Instance]\nname=no\n");
    EXPECT_EQ(opener(sandbox.pid()), "-|org.example.Box|-") << "not installed outside";
    const std::string entry = writeEntry(applications / "org.example.Box.desktop", "Box",
                                         "flatpak run org.example.Box", "X-Flatpak=x");
    EXPECT_EQ(opener(sandbox.pid()), "Box|org.example.Box|" + entry);
}

}  // namespace
}  // namespace ferrivane
