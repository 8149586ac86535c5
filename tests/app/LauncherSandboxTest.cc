#include <gmock/gmock.h>

#include "Ferrivane/ChromeLauncher.h"
#include "tests/app/HelperTest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kLink = "https://work.example/a";
constexpr const char* kNotInstalled =
    "[WARN] helper script not installed; opening in Chrome without a profile";

class LauncherSandbox : public test::HelperTest {
  protected:
    static constexpr pid_t kChrome = 42;

    void open(const ChromeLauncher::Request& request) {
        ChromeLauncher::open(fake.platform(), log, request, [this](const auto& outcome) {
            outcomes.push_back(outcome ? *outcome : "error: " + outcome.error().description());
        });
    }
    std::string outcomeOfRequest(const ChromeLauncher::Request& request) {
        outcomes.clear();
        open(request);
        fake.mainLoop.runUntilIdle();
        EXPECT_THAT(outcomes, SizeIs(1));
        EXPECT_FALSE(fake.launchLock.held);
        return outcomes.empty() ? "no outcome" : outcomes.front();
    }
    std::string outcomeOf(std::string link) {
        return outcomeOfRequest({.url = std::move(link), .profileDirectory = "Profile 2"});
    }

    std::vector<std::string> outcomes;
};

enum class Script { missing, outdated, ready };

TEST_F(LauncherSandbox, RouteFollowsFromSandboxHelperAndChrome) {
    const std::string switches = " [--profile-directory=Profile 2] [https://work.example/a]";
    const std::string application = "/apps/google-chrome.desktop";
    const std::string executable = "/opt/chrome/chrome";
    const std::string run = "scripts.run " + installed.string();
    const std::string relay = "browser.startRelay " + executable + switches;
    const std::string launch = "browser.launch " + application + switches;
    const std::string scriptOpen = run + " [open] [" + executable + "]" + switches;
    const std::string scriptLaunch = run + " [launch] [" + executable + "]" + switches;
    const std::string bundleLaunch = run + " [launch] [" + application + "]" + switches;
    const std::string linkOnly = "browser.openLink " + application + " [https://work.example/a]";
    const std::string direct = "handed to running Chrome (pid 42); helper exited 0";
    const std::string byScript = "handed to running Chrome (pid 42) through the helper script";
    const std::string started = "launched Chrome through the helper script";
    const std::string cold = "launched Chrome (pid 500)";
    const std::string alone =
        "opened in Chrome (pid 500) without a profile — helper script missing";
    const struct {
        const char* name;
        bool isSandboxed;
        Script script;
        bool isRunning;
        Desktop desktop;
        std::string call;  // the only one that touches Chrome
        std::string outcome;
    } rows[] = {
        {"free, running", false, Script::missing, true, Desktop::freedesktop, relay, direct},
        {"free, running, on macOS", false, Script::missing, true, Desktop::macOS, relay, direct},
        {"free, running, a script", false, Script::ready, true, Desktop::freedesktop, relay,
         direct},
        {"free, not running", false, Script::missing, false, Desktop::freedesktop, launch, cold},
        {"free, not running, on macOS", false, Script::missing, false, Desktop::macOS, launch,
         cold},
        {"free, not running, a script", false, Script::ready, false, Desktop::freedesktop, launch,
         cold},
        {"sandboxed, running", true, Script::ready, true, Desktop::freedesktop, scriptOpen,
         byScript},
        {"sandboxed, running, on macOS", true, Script::ready, true, Desktop::macOS, scriptOpen,
         byScript},
        {"sandboxed, running, an old script", true, Script::outdated, true, Desktop::freedesktop,
         scriptOpen, byScript},
        {"sandboxed, not running", true, Script::ready, false, Desktop::freedesktop, scriptLaunch,
         started},
        {"sandboxed, not running, on macOS", true, Script::ready, false, Desktop::macOS,
         bundleLaunch, started},
        {"sandboxed, not running, an old script", true, Script::outdated, false,
         Desktop::freedesktop, scriptLaunch, started},
        {"sandboxed, running, no script", true, Script::missing, true, Desktop::freedesktop,
         linkOnly, alone},
        {"sandboxed, not running, no script", true, Script::missing, false, Desktop::freedesktop,
         linkOnly, alone},
        {"sandboxed, no script, on macOS", true, Script::missing, false, Desktop::macOS, linkOnly,
         alone},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fake.isSandboxed = row.isSandboxed;
        fake.desktop = row.desktop;
        fake.browser.process = row.isRunning ? std::optional(kChrome) : std::nullopt;
        std::filesystem::remove(installed);
        if (row.script == Script::outdated) installScript("#!/bin/sh\n");
        if (row.script == Script::ready) installScript();
        fake.calls.clear();
        EXPECT_EQ(outcomeOf(kLink), row.outcome);
        EXPECT_THAT(fake.calls.of({"browser.launch", "browser.startRelay", "browser.openLink",
                                   "scripts.run"}),
                    ElementsAre(row.call));
        const bool warns = row.call == linkOnly;
        EXPECT_EQ(std::ranges::count(newLogLines(), kNotInstalled), warns ? 1 : 0);
    }
}

TEST_F(LauncherSandbox, WithoutAProfileTheLinkIsTheOnlySwitch) {
    installScript();
    EXPECT_EQ(outcomeOfRequest({.url = kLink, .activationToken = "tok"}),
              "launched Chrome through the helper script");
    EXPECT_THAT(fake.calls.of({"scripts.run"}),
                ElementsAre("scripts.run " + installed.string() +
                            " [launch] [/opt/chrome/chrome] [https://work.example/a] token=tok"));
}

TEST_F(LauncherSandbox, HandOverEndsWithTheCheckOfTheFrontWindow) {
    installScript();
    fake.browser.process = kChrome;
    fake.scripts.runTakes = 200ms;
    fake.frontmost.front = Frontmost::Application{7, "Mail"};
    open({.url = kLink});
    fake.mainLoop.advance(199ms);
    EXPECT_THAT(outcomes, IsEmpty());
    EXPECT_TRUE(fake.launchLock.held);
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(outcomes, SizeIs(1));
    fake.mainLoop.advance(399ms);
    EXPECT_THAT(fake.calls.of({"frontmost."}), IsEmpty());
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(fake.calls.of({"frontmost."}),
                ElementsAre("frontmost.current", "frontmost.activateHandedOver 42",
                            "frontmost.activate 42"));
}

TEST_F(LauncherSandbox, NothingIsDoneAboutTheFrontWindowAfterALaunch) {
    installScript();
    outcomeOf(kLink);
    EXPECT_THAT(fake.calls.of({"frontmost."}), IsEmpty());
    std::filesystem::remove(installed);
    outcomeOf(kLink);
    EXPECT_THAT(fake.calls.of({"frontmost."}), IsEmpty());
}

TEST_F(LauncherSandbox, FailureOfTheScriptIsTheOutcome) {
    installScript();
    fake.scripts.ran = std::unexpected(PlatformError{"the helper script ended with status 1"});
    EXPECT_EQ(outcomeOf(kLink), "error: the helper script ended with status 1");
    fake.browser.process = kChrome;
    EXPECT_EQ(outcomeOf(kLink), "error: the helper script ended with status 1");
    EXPECT_THAT(fake.calls.of({"frontmost.", "browser.openLink"}), IsEmpty());
}

TEST_F(LauncherSandbox, ChromeWithoutAnExecutableIsAnErrorWhereOneIsNeeded) {
    installScript();
    fake.applications.executables.clear();
    const std::string error = "error: no executable inside /apps/google-chrome.desktop";
    EXPECT_EQ(outcomeOf(kLink), error);
    fake.browser.process = kChrome;
    EXPECT_EQ(outcomeOf(kLink), error);
    fake.browser.process.reset();
    fake.desktop = Desktop::macOS;
    EXPECT_EQ(outcomeOf(kLink), "launched Chrome through the helper script");
}

TEST_F(LauncherSandbox, NoChromeInstalledIsAnErrorBeforeAnythingIsTried) {
    installScript();
    fake.applications.locations.clear();
    EXPECT_EQ(outcomeOf(kLink), "error: Google Chrome is not installed");
    EXPECT_THAT(fake.calls.of({"scripts.", "browser."}), IsEmpty());
}

TEST_F(LauncherSandbox, LinkAloneMustBeAUrl) {
    EXPECT_EQ(outcomeOf("foo://[::1"), "error: not a URL: foo://[::1");
    EXPECT_THAT(newLogLines(), ElementsAre(kNotInstalled));
    EXPECT_THAT(fake.calls.of({"browser.openLink"}), IsEmpty());
    installScript();
    EXPECT_EQ(outcomeOf("foo://[::1"), "launched Chrome through the helper script");
}

TEST_F(LauncherSandbox, LinkAloneFailsInTheDesktopsWords) {
    fake.browser.launched = std::unexpected(PlatformError{"Chrome has no desktop entry"});
    EXPECT_EQ(outcomeOf(kLink), "error: Chrome has no desktop entry");
}

TEST_F(LauncherSandbox, UnknownProcessOfALinkAloneIsZero) {
    fake.browser.launched = 0;
    EXPECT_EQ(outcomeOf(kLink),
              "opened in Chrome (pid 0) without a profile — helper script missing");
}

TEST_F(LauncherSandbox, WarningComesOncePerLink) {
    outcomeOf(kLink);
    outcomeOf(kLink);
    EXPECT_THAT(newLogLines(), ElementsAre(kNotInstalled, kNotInstalled));
}

TEST_F(LauncherSandbox, WhatChromeWouldTakeForASwitchIsRefusedOnEveryRoute) {
    const std::string withNul("a\0b", 3);
    for (const bool hasScript : {false, true}) {
        if (hasScript) installScript();
        for (const std::string& link : {std::string("--x"), std::string(" \n-x"), withNul}) {
            EXPECT_EQ(outcomeOf(link), "error: not a URL: " + link);
        }
    }
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
}

}  // namespace
}  // namespace ferrivane
