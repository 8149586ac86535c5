// Starting a browser and a relay, with a program that stands in for them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "Ferrivane/linux/LinuxBrowser.h"
#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;
using Outcome = std::expected<pid_t, PlatformError>;

class LinuxBrowserLaunch : public ::testing::Test {
  protected:
    LinuxBrowserLaunch() {
        test::copyProgram(STAND_IN_BROWSER, chromium);
        location = ChromeLocation{.entry = dir / "chromium.desktop",
                                  .executable = chromium,
                                  .command = {},
                                  .userDataDirectory = userData,
                                  .processNames = {"chromium"}};
    }
    ~LinuxBrowserLaunch() override { std::filesystem::remove_all(userData); }

    std::string listening() const { return "--user-data-dir=" + userData.string(); }

    // Starts this command line with these switches and waits for the outcome, the loop being idle
    // then.
    Outcome launch(const Words& command, const Browser::Arguments& arguments = {}) {
        location->command = command;
        std::optional<Outcome> outcome;
        browser.launch(location->entry, arguments, [&](Outcome result) {
            EXPECT_FALSE(outcome) << "completed twice";
            EXPECT_TRUE(started.empty()) << "the outcome is told first";
            outcome = std::move(result);
        });
        loop.runUntilIdle();
        if (!outcome) return std::unexpected(PlatformError{"never completed"});
        return *outcome;
    }

    const test::TempDir dir;
    const std::filesystem::path chromium = dir / "bin/chromium";
    const std::filesystem::path userData = dir / "user-data";
    std::optional<ChromeLocation> location;
    EventLoop loop;
    std::vector<pid_t> started;
    LinuxBrowser browser{location, loop, [] {},
                         [this](pid_t process) { started.push_back(process); }};
};

TEST_F(LinuxBrowserLaunch, SucceedsWithTheProcessOnceItListens) {
    const auto outcome = launch({chromium, "--sleep=100", listening(), "--socket-later=50"});
    ASSERT_TRUE(outcome) << outcome.error().text;
    EXPECT_EQ(Processes::executable(*outcome), chromium);
    EXPECT_EQ(browser.running(), *outcome);
    EXPECT_TRUE(browser.isRunning(*outcome));
    EXPECT_EQ(started, std::vector{*outcome});
}

TEST_F(LinuxBrowserLaunch, WhatACrashLeftBehindIsNotTakenForTheNewBrowser) {
    std::filesystem::create_directory(userData);
    std::filesystem::create_symlink(dir / "nowhere", userData / "SingletonSocket");
    std::filesystem::create_symlink("1", userData / "SingletonCookie");
    std::filesystem::create_symlink("host-1", userData / "SingletonLock");
    const auto outcome = launch({chromium, "--sleep=100", listening()});
    ASSERT_TRUE(outcome);
    EXPECT_EQ(browser.running(), *outcome);
}

TEST_F(LinuxBrowserLaunch, AWrapperThatBecomesTheBrowser) {
    const auto wrapper =
        test::writeScript(dir / "wrapper", "#!/bin/sh\nexec '" + chromium.string() + "' " +
                                               listening() + " \"$@\"\n");
    const auto outcome = launch({wrapper});
    ASSERT_TRUE(outcome);
    EXPECT_EQ(Processes::executable(*outcome), chromium);
}

TEST_F(LinuxBrowserLaunch, AWrapperThatStartsTheBrowserAndWaits) {
    const auto wrapper = test::writeScript(
        dir / "wrapper", "#!/bin/sh\n'" + chromium.string() + "' " + listening() + " \"$@\"\n:\n");
    const auto outcome = launch({wrapper});
    ASSERT_TRUE(outcome);
    EXPECT_EQ(Processes::executable(*outcome), chromium) << "the browser's process, not its own";
    EXPECT_EQ(started, std::vector{*outcome});
}

TEST_F(LinuxBrowserLaunch, AnEarlyEnd) {
    const auto ended = [](int status) {
        return "Chrome ended with status " + std::to_string(status) + " at its start";
    };
    const struct {
        const char* name;
        Words switches;
        std::string error;
    } rows[] = {
        {"a failure", {"--exit=1"}, ended(1)},
        {"a failure after a while", {"--sleep=100", "--exit=21"}, ended(21)},
        {"a signal", {"--signal=" + std::to_string(SIGKILL)}, ended(128 + SIGKILL)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto outcome = launch({chromium}, {.switches = row.switches, .activationToken = {}});
        EXPECT_EQ(outcome ? "started" : outcome.error().text, row.error);
        EXPECT_TRUE(started.empty());
    }
}

TEST_F(LinuxBrowserLaunch, AWrapperThatLeavesTheBrowserBehind) {
    const auto wrapper =
        test::writeScript(dir / "wrapper", "#!/bin/sh\n'" + chromium.string() + "' --sleep=100 " +
                                               listening() + " \"$@\" &\n");
    const auto outcome = launch({wrapper});
    ASSERT_TRUE(outcome);
    EXPECT_EQ(Processes::executable(*outcome), chromium);
    EXPECT_EQ(browser.running(), *outcome) << "not before it listens";
    EXPECT_EQ(started, std::vector{*outcome});
}

TEST_F(LinuxBrowserLaunch, AContainersBrowserIsNotSeenToBeReady) {
    location->isContained = true;
    EXPECT_EQ(launch({chromium, "--exit=0"}), 0) << "its process is not known";
    EXPECT_TRUE(started.empty());
}

// The one test that takes its time.
TEST_F(LinuxBrowserLaunch, ABrowserThatNeverListensCountsAsStartedAfterFiveSeconds) {
    const auto before = loop.now();
    std::optional<Outcome> leftBehind;
    location->command = {chromium, "--exit=0"};
    browser.launch(location->entry, {}, [&](Outcome outcome) { leftBehind = std::move(outcome); });
    const auto outcome = launch({chromium, "--sleep=600000"});
    EXPECT_GE(loop.now() - before, 5s);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(Processes::executable(*outcome), chromium);
    EXPECT_EQ(started, std::vector{*outcome});
    EXPECT_EQ(leftBehind, Outcome(0)) << "a process that has ended well is nobody's";
    ::kill(*outcome, SIGKILL);
}

TEST_F(LinuxBrowserLaunch, ARefusal) {
    test::writeText(dir / "text", "no program");
    const test::ScopedVariable path("PATH", "/usr/bin:/bin");
    const struct {
        const char* name;
        Words command;
        std::vector<std::string> switches;
        std::string error;
    } rows[] = {
        {"a missing program",
         {dir / "missing"},
         {},
         "cannot start " + (dir / "missing").string() + ": No such file or directory"},
        {"a program missing on the path",
         {"no-such-browser"},
         {},
         "cannot start no-such-browser: No such file or directory"},
        {"a file that is no program",
         {dir / "text"},
         {},
         "cannot start " + (dir / "text").string() + ": Permission denied"},
        {"a link of more than 128 KiB",
         {chromium},
         {"https://a.example/" + std::string(131072, 'x')},
         "cannot start " + chromium.string() + ": Argument list too long"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto outcome = launch(row.command, {.switches = row.switches, .activationToken = {}});
        EXPECT_EQ(outcome ? "started" : outcome.error().text, row.error);
        const auto relay =
            browser.startRelay(row.command[0], {.switches = row.switches, .activationToken = {}},
                               [](int) { ADD_FAILURE() << "completed, though not started"; });
        EXPECT_EQ(relay ? "started" : relay.error().text, row.error);
    }
    loop.runUntilIdle();
    EXPECT_TRUE(started.empty());
    location.reset();
    std::string error;
    browser.launch("", {}, [&](const Outcome& outcome) { error = outcome.error().text; });
    EXPECT_EQ(error, "Chrome has no desktop entry");
}

TEST_F(LinuxBrowserLaunch, TheExecLineComesFirstThenTheSwitches) {
    const std::string report = "--report=" + (dir / "report").string();
    const std::string link = "https://a.example/?q=\"'$(id) \n&\xFF";
    ASSERT_TRUE(launch(
        {"env", "A=b", chromium, report, "--from-exec", listening()},
        {.switches = {"--profile-directory=Profile 1", link}, .activationToken = "token 1"}));
    EXPECT_THAT(test::readText(dir / "report"),
                HasSubstr("argument --from-exec\nargument " + listening() +
                          "\nargument --profile-directory=Profile 1\nargument " + link +
                          "\ntoken token 1\n"));
}

TEST_F(LinuxBrowserLaunch, TheRelaysExitStatus) {
    location->command = {"not-this", "--exit=99"};
    const struct {
        const char* name;
        std::string behaviour;
        int status;
    } rows[] = {
        {"well", "--exit=0", 0},
        {"with a failure", "--exit=21", 21},
        {"by a signal", "--signal=" + std::to_string(SIGTERM), 128 + SIGTERM},
        {"killed", "--signal=" + std::to_string(SIGKILL), 128 + SIGKILL},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<int> statuses;
        const auto relay =
            browser.startRelay(chromium, {.switches = {row.behaviour}, .activationToken = {}},
                               [&](int status) { statuses.push_back(status); });
        ASSERT_TRUE(relay);
        EXPECT_GT(*relay, 0);
        EXPECT_TRUE(statuses.empty()) << "never before the call returns";
        loop.runUntilIdle();
        EXPECT_EQ(statuses, std::vector{row.status});
    }
}

TEST_F(LinuxBrowserLaunch, TheRelayIsTheExecLineWhereTheExecutableAloneWouldNotFindTheBrowser) {
    for (const bool isContained : {true, false}) {
        SCOPED_TRACE(isContained);
        const auto report = dir / (isContained ? "contained" : "native");
        location->command = {chromium, "--from-exec", "--report=" + report.string()};
        location->isContained = isContained;
        location->hasOwnFolder = !isContained;
        ASSERT_TRUE(browser.startRelay("/not/this", {.switches = {"link"}, .activationToken = {}},
                                       [](int status) { EXPECT_EQ(status, 0); }));
        loop.runUntilIdle();
        EXPECT_THAT(test::readText(report), HasSubstr("argument --from-exec\nargument link\n"));
    }
}

TEST_F(LinuxBrowserLaunch, ABrowserThatHasEndedLeavesNoProcessBehind) {
    const auto outcome = launch({chromium, "--sleep=600000", listening()});
    ASSERT_TRUE(outcome);
    ::kill(*outcome, SIGTERM);
    const auto isCollected = [&] {
        loop.after(0ms, [] {});
        loop.runUntilIdle();
        return !Processes::status(*outcome).has_value();
    };
    EXPECT_TRUE(test::waitUntil(isCollected));
}

TEST_F(LinuxBrowserLaunch, AnAbandonedRelayGoesOnAlone) {
    for (const bool becomesTheBrowser : {false, true}) {
        SCOPED_TRACE(becomesTheBrowser);
        const auto relay =
            browser.startRelay(chromium,
                               {.switches = {becomesTheBrowser ? listening() : "--sleep=600000"},
                                .activationToken = {}},
                               [](int) { ADD_FAILURE() << "completed"; });
        ASSERT_TRUE(relay);
        if (becomesTheBrowser) {
            EXPECT_TRUE(test::waitUntil([&] { return browser.running() == *relay; }));
        }
        browser.abandonRelay(*relay);
        loop.runUntilIdle();
        EXPECT_FALSE(test::isGone(*relay));
        EXPECT_EQ(started, becomesTheBrowser ? std::vector{*relay} : std::vector<pid_t>());
        ::kill(*relay, SIGKILL);
    }
}

}  // namespace
}  // namespace ferrivane
