// Whether the browser runs, by its singleton socket and its lock.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/LinuxBrowser.h"
#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::copyProgram;
using test::FakeChrome;
using test::Program;

std::string hostName() {
    utsname names{};
    ::uname(&names);
    return names.nodename;
}

class LinuxBrowserRunning : public ::testing::Test {
  protected:
    LinuxBrowserRunning() {
        copyProgram(SENDER, chromium);
        std::filesystem::create_directory(userData);
        location = ChromeLocation{.entry = dir / "chromium.desktop",
                                  .executable = chromium,
                                  .command = {chromium.string()},
                                  .userDataDirectory = userData,
                                  .processNames = {"chromium", "chrome"}};
    }

    void setLock(const std::string& text) const {
        std::filesystem::remove(userData / "SingletonLock");
        std::filesystem::create_symlink(text, userData / "SingletonLock");
    }

    const test::TempDir dir;
    const std::filesystem::path chromium = dir / "bin/chromium";
    const std::filesystem::path userData = dir / "user-data";
    std::optional<ChromeLocation> location;
    EventLoop loop;
    LinuxBrowser browser{location, loop, [] {}, [](pid_t) {}};
};

TEST_F(LinuxBrowserRunning, TheListenerOfTheSocket) {
    FakeChrome chrome(dir.path());
    EXPECT_EQ(browser.running(), ::getpid());
    chrome.setLock(std::nullopt);
    EXPECT_EQ(browser.running(), ::getpid()) << "the lock is only a hint";
    chrome.setLock("another-host-1");
    EXPECT_EQ(browser.running(), ::getpid());
    EXPECT_TRUE(chrome.messages().empty()) << "asking hands nothing over";
    chrome.quit();
    EXPECT_EQ(browser.running(), std::nullopt);
}

TEST_F(LinuxBrowserRunning, TheListenerIsAnotherProcess) {
    const test::Child child([&] {
        const FakeChrome chrome(dir.path());
        return ::pause();
    });
    EXPECT_TRUE(test::waitUntil([&] { return browser.running() == child.pid(); }));
}

TEST_F(LinuxBrowserRunning, WhatACrashLeavesBehindIsNotRunning) {
    FakeChrome chrome(dir.path());
    chrome.crash();
    EXPECT_TRUE(std::filesystem::is_symlink(userData / "SingletonSocket"));
    EXPECT_EQ(browser.running(), std::nullopt);
    EXPECT_EQ(test::namesIn(userData),
              (std::vector<std::string>{"SingletonCookie", "SingletonLock", "SingletonSocket"}))
        << "the browser's own files are never touched";
}

TEST_F(LinuxBrowserRunning, ASocketThatIsNotTheDirectorysDoesNotCount) {
    FakeChrome chrome(dir.path());
    chrome.setSocketCookie("somebody else's");
    EXPECT_EQ(browser.running(), std::nullopt);
    EXPECT_EQ(chrome.connections(), 0U);
}

TEST_F(LinuxBrowserRunning, NoLocation) {
    const FakeChrome chrome(dir.path());
    location.reset();
    EXPECT_EQ(browser.running(), std::nullopt);
    EXPECT_FALSE(browser.isRunning(::getpid()));
}

TEST_F(LinuxBrowserRunning, TheProcessThatTheLockNames) {
    const Program running({chromium, "cat"});
    const Program chrome({copyProgram(SENDER, dir / "elsewhere/chrome"), "cat"});
    const Program other({copyProgram(SENDER, dir / "bin/chromium-other"), "cat"});
    Program ended({chromium, "cat"});
    const auto textOf = [](const Program& program) { return std::to_string(program.pid()); };
    const std::string dead = textOf(ended);
    ended.end();
    const std::string host = hostName() + "-";
    const struct {
        const char* name;
        std::string lock;
        std::optional<pid_t> process;
    } rows[] = {
        {"a live process of this host", host + textOf(running), running.pid()},
        {"another of the browser's names", host + textOf(chrome), chrome.pid()},
        {"another program", host + textOf(other), std::nullopt},
        {"a process that is gone", host + dead, std::nullopt},
        {"another host", "x" + host + textOf(running), std::nullopt},
        {"another host whose name ends alike", hostName() + "-2-" + textOf(running), std::nullopt},
        {"no host", "-" + textOf(running), std::nullopt},
        {"no dash", textOf(running), std::nullopt},
        {"no number", host + "running", std::nullopt},
        {"more than a number", host + textOf(running) + "x", std::nullopt},
        {"nothing behind the dash", host, std::nullopt},
        {"no process", host + "0", std::nullopt},
        {"a negative number", host + "-" + textOf(running), std::nullopt},
        {"too large a number", host + "99999999999999999999", std::nullopt},
        {"the first process of all", host + "1", std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        setLock(row.lock);
        EXPECT_EQ(browser.running(), row.process);
    }
    std::filesystem::remove(userData / "SingletonLock");
    test::writeText(userData / "SingletonLock", host + textOf(running));
    EXPECT_EQ(browser.running(), std::nullopt) << "a file instead of a link";
}

TEST_F(LinuxBrowserRunning, AnUpgradedBrowserStillRuns) {
    const Program running({chromium, "cat"});
    setLock(hostName() + "-" + std::to_string(running.pid()));
    std::filesystem::remove(chromium);
    EXPECT_EQ(browser.running(), running.pid());
}

TEST_F(LinuxBrowserRunning, AZombieDoesNotRun) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(chromium.c_str(), chromium.c_str(), "true", nullptr);
        ::_exit(127);
    }
    setLock(hostName() + "-" + std::to_string(child));
    ASSERT_TRUE(test::waitUntil([&] { return test::isGone(child); }));
    EXPECT_EQ(::kill(child, 0), 0) << "it answers signals";
    EXPECT_EQ(browser.running(), std::nullopt);
    ::waitpid(child, nullptr, 0);
}

TEST_F(LinuxBrowserRunning, AnotherUsersProcessDoesNotCount) {
    if (::getuid() != 0) return;  // nobody else is told which program it runs
    for (const auto& folder : {dir.path(), chromium.parent_path()}) {
        std::filesystem::permissions(folder, test::kForEverybody);
    }
    std::filesystem::remove(chromium);
    copyProgram("/bin/sleep", chromium);
    const test::Child child([&] {
        test::becomeUnprivileged();
        return ::execl(chromium.c_str(), chromium.c_str(), "60", nullptr);
    });
    setLock(hostName() + "-" + std::to_string(child.pid()));
    ASSERT_TRUE(test::waitUntil(
        [&] { return Processes::executable(child.pid()).value_or("").filename() == "chromium"; }));
    EXPECT_EQ(browser.running(), std::nullopt);
}

TEST_F(LinuxBrowserRunning, OneProcessIsTheBrowserWhenItHoldsTheLockAndListens) {
    const Program program({copyProgram(STAND_IN_BROWSER, dir / "stand-in/chromium"),
                           "--user-data-dir=" + userData.string(), "--socket-later=300"});
    const auto hasLock = [&] { return std::filesystem::is_symlink(userData / "SingletonLock"); };
    ASSERT_TRUE(test::waitUntil(hasLock));
    const bool wasRunning = browser.isRunning(program.pid());
    const bool wasListening = std::filesystem::is_symlink(userData / "SingletonSocket");
    EXPECT_TRUE(!wasRunning || wasListening) << "it holds the lock, but does not listen yet";
    EXPECT_TRUE(test::waitUntil([&] { return browser.isRunning(program.pid()); }));
    EXPECT_FALSE(browser.isRunning(::getpid()));
    EXPECT_FALSE(browser.isRunning(0));
    std::filesystem::remove(userData / "SingletonLock");
    EXPECT_FALSE(browser.isRunning(program.pid()));
    EXPECT_EQ(browser.running(), program.pid());
    std::filesystem::remove_all(userData);
}

TEST_F(LinuxBrowserRunning, ABrowserThatHangsIsNotAskedAgainAndAgain) {
    FakeChrome chrome(dir.path(), {.accepting = false});
    const Program other({chromium, "cat"});
    // The lock is the relay's, the socket still the hanging browser's.
    chrome.setLock(hostName() + "-" + std::to_string(::getpid()));
    for (int i = 0; i < 100; ++i) EXPECT_FALSE(browser.isRunning(other.pid()));
    chrome.startAccepting();
    EXPECT_EQ(browser.running(), ::getpid());
    EXPECT_TRUE(test::waitUntil([&] { return chrome.connections() > 0; }));
    EXPECT_EQ(chrome.connections(), 1U);
}

}  // namespace
}  // namespace ferrivane
