// The session bus, with a private one.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "core/support/FileDescriptor.h"
#include "tests/linux/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::outputOf;
using test::Program;
using test::Variables;

class SessionBus : public ::testing::Test {
  protected:
    SessionBus() {
        // A bus starts programs for names that nobody owns, as sessions are set up to.
        std::filesystem::create_directory(dir / "services");
        test::writeScript(dir / "service",
                          "#!/bin/sh\ntouch '" + (dir / "started").string() + "'\n");
        test::writeText(dir / "services/x.service",
                        "[D-BUS Service]\nName=org.example.Startable\n"
                        "Exec=" +
                            (dir / "service").string() + "\n");
        test::writeText(
            dir / "bus.conf",
            "<busconfig><type>session</type><listen>unix:path=" + (dir / "bus").string() +
                "</listen><servicedir>" + (dir / "services").string() +
                "</servicedir><policy context=\"default\"><allow send_destination=\"*\"/>"
                "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
    }

    // What is asked on a bus with this address.
    static Variables bus(const std::string& address) {
        return {{"DBUS_SESSION_BUS_ADDRESS", address}};
    }
    static std::string owner(const char* name, const Variables& variables) {
        return outputOf({ADAPTER_PROBE, "owner", name}, variables);
    }

    // What the desktop's library runs when it finds no bus leaves a mark.
    std::string pathWithBusLauncher() const {
        test::writeScript(dir / "bin/dbus-launch",
                          "#!/bin/sh\ntouch '" + (dir / "launched").string() + "'\n");
        return (dir / "bin").string() + ":/usr/bin:/bin";
    }

    // A socket that takes connections and says nothing, in the bus's place.
    FileDescriptor listenSilently() const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = dir / "bus";
        std::memcpy(address.sun_path, path.data(), path.size());
        FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (!socket ||
            ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
                0 ||
            ::listen(socket.get(), 5) != 0) {
            throw std::runtime_error(path);
        }
        return socket;
    }

    const test::TempDir dir;
};

class SessionBusThatRuns : public SessionBus {
  protected:
    SessionBusThatRuns()
        : daemon({"dbus-daemon", "--nofork", "--print-address",
                  "--config-file=" + (dir / "bus.conf").string()}),
          address(daemon.readLine()) {}
    ~SessionBusThatRuns() override { daemon.terminate(); }

    Program daemon;
    const std::string address;
};

TEST_F(SessionBusThatRuns, TheProcessThatOwnsAName) {
    ASSERT_NE(address, "") << "dbus-daemon does not run";
    EXPECT_EQ(owner("org.example.Name", bus(address)), "nobody\n");
    Program peer({BUS_STAND_IN, "org.example.Name"}, bus(address));
    ASSERT_EQ(peer.readLine(), "owned");
    EXPECT_EQ(owner("org.example.Name", bus(address)), std::to_string(peer.pid()) + "\n");
    EXPECT_EQ(owner("org.example.Other", bus(address)), "nobody\n");
    EXPECT_EQ(owner("no name at all", bus(address)), "nobody\n");
    EXPECT_EQ(owner("", bus(address)), "nobody\n");
    peer.end();
    EXPECT_EQ(owner("org.example.Name", bus(address)), "nobody\n");
}

TEST_F(SessionBusThatRuns, AskingStartsNobody) {
    EXPECT_EQ(owner("org.example.Startable", bus(address)), "nobody\n");
    outputOf({"dbus-send", "--session", "--dest=org.example.Startable", "/", "a.b.c"},
             bus(address));
    EXPECT_TRUE(test::waitUntil([&] { return std::filesystem::exists(dir / "started"); }))
        << "it could have been started";
}

TEST_F(SessionBusThatRuns, TheBusInTheRuntimeFolder) {
    Program peer({BUS_STAND_IN, "org.example.Name"}, bus(address));
    ASSERT_EQ(peer.readLine(), "owned");
    EXPECT_EQ(owner("org.example.Name", {{"XDG_RUNTIME_DIR", dir.path().string()}}),
              std::to_string(peer.pid()) + "\n");
}

TEST_F(SessionBusThatRuns, ASessionMovesToAScopeOfItsOwnWhereSystemdRuns) {
    Program session({"setsid", SENDER, "sh", "-c", "echo $$; exec cat"});
    const std::string leader = std::to_string(session.pid());
    const std::string member = session.readLine();
    std::filesystem::create_directories(dir / "systemd");
    const Variables variables{{"DBUS_SESSION_BUS_ADDRESS", address},
                              {"XDG_RUNTIME_DIR", dir.path().string()}};
    EXPECT_EQ(outputOf({ADAPTER_PROBE, "scope", leader}, variables), "asked\n") << "no systemd";
    test::writeText(dir / "systemd/private", "");
    EXPECT_EQ(outputOf({ADAPTER_PROBE, "scope", leader}, variables), "asked\n") << "not on the bus";
    Program systemd({BUS_STAND_IN, "org.freedesktop.systemd1"}, bus(address));
    ASSERT_EQ(systemd.readLine(), "owned");
    EXPECT_EQ(outputOf({ADAPTER_PROBE, "scope", leader}, variables), "asked\n");
    const auto [lower, higher] = std::minmax({session.pid(), std::stoi(member)});
    EXPECT_EQ(systemd.readLine(), "StartTransientUnit ('app-ferrivane-chrome-" + leader +
                                      ".scope', 'fail', [('PIDs', <[uint32 " +
                                      std::to_string(lower) + ", " + std::to_string(higher) +
                                      "]>), ('Slice', <'app.slice'>)], @a(sa(sv)) [])");
    session.end();
    EXPECT_EQ(outputOf({ADAPTER_PROBE, "scope", leader}, variables), "asked\n") << "it is gone";
}

TEST_F(SessionBus, WithoutABusNoneIsStarted) {
    const std::string path = pathWithBusLauncher();
    test::writeText(dir / "file", "");
    const struct {
        const char* name;
        std::optional<std::string> address;
        std::optional<std::string> runtime;
    } rows[] = {
        {"nothing", std::nullopt, std::nullopt},
        {"an empty address", "", dir / "missing"},
        {"a runtime folder without a bus", std::nullopt, dir / "services"},
        {"an address where nobody listens", "unix:path=" + (dir / "nothing").string(),
         std::nullopt},
        {"an address that is none", "nonsense", std::nullopt},
        {"an address that asks for a start", "autolaunch:", std::nullopt},
        {"one that asks for it in the end",
         "unix:path=" + (dir / "nothing").string() + ";autolaunch:", std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Variables variables{{"DBUS_SESSION_BUS_ADDRESS", row.address},
                                  {"XDG_RUNTIME_DIR", row.runtime},
                                  {"DISPLAY", ":65535"},
                                  {"PATH", path}};
        EXPECT_EQ(owner("org.example.Name", variables), "nobody\n");
        EXPECT_EQ(outputOf({ADAPTER_PROBE, "scope", "1"}, variables), "asked\n");
        EXPECT_FALSE(std::filesystem::exists(dir / "launched"));
    }
}

TEST_F(SessionBus, ABusThatNeverAnswersDoesNotHoldUsUp) {
    const auto silent = listenSilently();
    EXPECT_EQ(owner("org.example.Name", bus("unix:path=" + (dir / "bus").string())), "nobody\n");
}

TEST_F(SessionBus, ASocketOfAnotherUserInTheRuntimeFolderIsNoBus) {
    if (::getuid() != 0) return;  // nobody else can make one
    const std::string searchPath = pathWithBusLauncher();
    const auto silent = listenSilently();
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(::chown((dir / "bus").c_str(), kNobody, static_cast<gid_t>(-1)), 0);
    EXPECT_EQ(owner("org.example.Name", {{"XDG_RUNTIME_DIR", dir.path().string()},
                                         {"DISPLAY", ":65535"},
                                         {"PATH", searchPath}}),
              "nobody\n");
    EXPECT_FALSE(std::filesystem::exists(dir / "launched"));
}

}  // namespace
}  // namespace ferrivane
