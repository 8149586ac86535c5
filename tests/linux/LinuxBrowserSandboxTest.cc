// In a sandbox the browser's own files and socket are out of reach.
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/LinuxBrowser.h"
#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::copyProgram;
using test::FakeChrome;
using test::Program;
using ::testing::ElementsAre;

class LinuxBrowserSandbox : public ::testing::Test {
  protected:
    LinuxBrowserSandbox() {
        copyProgram(SENDER, program);
        std::filesystem::create_directory(userData);
        location = ChromeLocation{.entry = dir / "chromium.desktop",
                                  .executable = program,
                                  .command = {program.string()},
                                  .userDataDirectory = userData,
                                  .processNames = {programName}};
    }

    // "opened N" or the error of a link opened by this command.
    std::string outcomeOf(const std::vector<std::string>& command, const std::string& link) {
        location->command = command;
        std::vector<std::string> outcomes;
        browser.openLink(location->entry, {{link}, "tok"}, [&](const auto& process) {
            outcomes.push_back(process ? "opened " + std::to_string(*process)
                                       : process.error().text);
        });
        loop.runUntilIdle();
        EXPECT_EQ(outcomes.size(), 1U);
        return outcomes.empty() ? "no outcome" : outcomes.front();
    }

    // The kernel tells the program first, then its arguments, the environment last.
    bool hasBegun(pid_t process) const {
        return Processes::executable(process) == program &&
               !Processes::environment(process).empty();
    }

    const test::TempDir dir;
    // Every process of the machine counts that has this name: those of other tests have another.
    const std::string programName = "fv-sandboxed-" + std::to_string(::getpid());
    const std::filesystem::path program = dir / "bin" / programName;
    const std::filesystem::path userData = dir / "user-data";
    std::optional<ChromeLocation> location;
    std::vector<pid_t> started;
    EventLoop loop;
    LinuxBrowser browser{location, loop,
                         [] {},    [this](pid_t process) { started.push_back(process); },
                         true,     HostSpawn(dir / "no-marker")};
};

TEST_F(LinuxBrowserSandbox, SocketAndLockDoNotCount) {
    const FakeChrome chrome(dir.path());
    EXPECT_EQ(browser.running(), std::nullopt);
    EXPECT_TRUE(chrome.messages().empty());
}

TEST_F(LinuxBrowserSandbox, ProcessOfTheBrowsersNameIsTheRunningOne) {
    EXPECT_EQ(browser.running(), std::nullopt);
    {
        const Program one({program, "cat"});
        EXPECT_TRUE(test::waitUntil([&] { return browser.running() == one.pid(); }));
        const Program two({program, "cat"});
        EXPECT_EQ(browser.running(), std::min(one.pid(), two.pid()));
    }
    EXPECT_EQ(browser.running(), std::nullopt);
}

TEST_F(LinuxBrowserSandbox, HelpersAndBrowsersOfOtherFoldersDoNotCount) {
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        bool counts;
    } rows[] = {
        {"a helper", {"--type=renderer"}, false},
        {"a helper, its type later", {"--x", "--type=gpu-process"}, false},
        {"another folder", {"--user-data-dir=/tmp/elsewhere"}, false},
        {"this folder", {"--user-data-dir=" + userData.string()}, true},
        {"a link that speaks of a type", {"https://a/?x=--type=renderer"}, true},
    };
    for (const auto& row : rows) {
        std::vector<std::string> command{program, "sh", "-c", "exec cat", "sh"};
        command.insert(command.end(), row.arguments.begin(), row.arguments.end());
        Program child(command);
        ASSERT_TRUE(test::waitUntil([&] { return hasBegun(child.pid()); }));
        EXPECT_EQ(browser.running() == child.pid(), row.counts) << row.name;
    }
}

TEST_F(LinuxBrowserSandbox, EnvironmentOfTheProcessTellsItsFolderToo) {
    location->folder = "chromium";
    const test::Variables none{{"CHROME_USER_DATA_DIR", std::nullopt},
                               {"CHROME_CONFIG_HOME", std::nullopt},
                               {"XDG_CONFIG_HOME", std::nullopt}};
    const auto with = [&](std::string name, std::string value) {
        test::Variables variables = none;
        variables.insert_or_assign(std::move(name), std::move(value));
        return variables;
    };
    const struct {
        const char* name;
        test::Variables variables;
        std::string userData;
        bool counts;
    } rows[] = {
        {"another home", with("HOME", "/home/ada"), "/home/bob/.config/chromium", false},
        {"this home", with("HOME", "/home/ada"), "/home/ada/.config/chromium", true},
        {"another configuration", with("XDG_CONFIG_HOME", "/c"), "/home/ada/.config/chromium",
         false},
        {"this configuration", with("XDG_CONFIG_HOME", "/c"), "/c/chromium", true},
        {"this folder", with("CHROME_USER_DATA_DIR", "/u"), "/u", true},
    };
    for (const auto& row : rows) {
        location->userDataDirectory = row.userData;
        const Program child({program, "cat"}, row.variables);
        ASSERT_TRUE(test::waitUntil([&] { return hasBegun(child.pid()); }));
        EXPECT_EQ(browser.running() == child.pid(), row.counts) << row.name;
    }
}

TEST_F(LinuxBrowserSandbox, LinkAloneIsGivenToTheEntrysCommand) {
    const auto recorder =
        test::writeScript(dir / "recorder",
                          "#!/bin/sh\nprintf '%s|' \"$@\" \"$XDG_ACTIVATION_TOKEN\" >\"$0.new\"\n"
                          "mv \"$0.new\" \"$0.record\"\n");
    // On a busy machine it may take longer than the second after which it is moved as a browser is.
    EXPECT_EQ(outcomeOf({recorder, "--flag", "a b"}, "https://a/$(x)"), "opened 0");
    const auto record = dir / "recorder.record";
    ASSERT_TRUE(test::waitUntil([&] { return std::filesystem::exists(record); }));
    EXPECT_EQ(test::readText(record), "--flag|a b|https://a/$(x)|tok|");
    EXPECT_TRUE(test::namesIn(userData).empty());
}

TEST_F(LinuxBrowserSandbox, LinkPassedOnIsTheRunningBrowsers) {
    const Program running({program, "cat"});
    ASSERT_TRUE(test::waitUntil([&] { return browser.running() == running.pid(); }));
    EXPECT_EQ(outcomeOf({"true"}, "https://a/"), "opened " + std::to_string(running.pid()));
}

TEST_F(LinuxBrowserSandbox, BrowserThatStaysIsTheOneThatWasStarted) {
    const auto begin = loop.now();
    const std::string outcome = outcomeOf({program, "sh", "-c", "exec sleep 60"}, "https://a/");
    EXPECT_LT(loop.now() - begin, std::chrono::seconds(20));
    ASSERT_EQ(started.size(), 1U);
    EXPECT_EQ(outcome, "opened " + std::to_string(started[0]));
    ::kill(-started[0], SIGKILL);
    EXPECT_TRUE(test::waitUntil([&] { return test::isGone(started[0]); }));
}

TEST_F(LinuxBrowserSandbox, EarlyEndIsAnError) {
    // On a busy machine it may take longer than the second after which it passes for a browser.
    EXPECT_TRUE(test::waitUntil([&] {
        return outcomeOf({"false"}, "https://a/") == "Chrome ended with status 1 at its start";
    }));
    EXPECT_EQ(outcomeOf({"/no/such/program"}, "https://a/"),
              "cannot start /no/such/program: No such file or directory");
    location.reset();
    std::vector<std::string> errors;
    browser.openLink({}, {{"https://a/"}, {}},
                     [&](const auto& process) { errors.push_back(process.error().text); });
    EXPECT_THAT(errors, ElementsAre("Chrome has no desktop entry"));
}

TEST_F(LinuxBrowserSandbox, InAFlatpakTheLinkIsOpenedOnTheHost) {
    const auto spawn = test::writeScript(dir / "bin/flatpak-spawn",
                                         "#!/bin/sh\nprintf '%s|' \"$@\" >\"$0.new\"\n"
                                         "mv \"$0.new\" \"$0.record\"\n");
    test::writeText(dir / "marker", "");
    const test::ScopedVariable path("PATH",
                                    spawn.parent_path().string() + ":" + environment("PATH"));
    LinuxBrowser inside(location, loop, [] {}, [](pid_t) {}, true, HostSpawn(dir / "marker"));
    inside.openLink({}, {{"https://a/"}, "tok"}, [](const auto&) {});
    loop.runUntilIdle();
    const std::string record = spawn.string() + ".record";
    ASSERT_TRUE(test::waitUntil([&] { return std::filesystem::exists(record); }));
    EXPECT_EQ(test::readText(record),
              "--host|--env=XDG_ACTIVATION_TOKEN=tok|" + program.string() + "|https://a/|");
}

}  // namespace
}  // namespace ferrivane
