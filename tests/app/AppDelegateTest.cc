// Start-up, reopening and the end of the resident application, on a clock that the test moves.
#include <gmock/gmock.h>

#include "Ferrivane/AppDelegate.h"
#include "tests/app/AppTest.h"
#include "tests/support/Files.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kShowSettings = "userInterface.showSettings";

class AppDelegateTest : public test::AppTest {
  protected:
    // Started, with or without "--agent".
    AppDelegate& start(bool agentMode) {
        delegate.emplace(fake.platform(), log, agentMode, rulesFile);
        delegate->applicationWillFinishLaunching();
        delegate->applicationDidFinishLaunching();
        return *delegate;
    }

    std::optional<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, LinksMayComeBeforeTheLaunchIsFinished) {
    delegate.emplace(fake.platform(), log, false, rulesFile);
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
    EXPECT_EQ(delegate->applicationWillFinishLaunching(), Session::Place::resident);
    EXPECT_THAT(fake.calls.texts(), ElementsAre("session.join"));
    EXPECT_EQ(fake.session.events, &*delegate);
}

TEST_F(AppDelegateTest, StartsInThisOrder) {
    fake.applications.bundle.version = "1.2";
    fake.preferences.flags["showMenuBarIcon"] = true;
    start(true);
    EXPECT_THAT(
        fake.calls.texts(),
        ElementsAre("session.join", "applications.ownBundle", "userInterface.installMainMenu",
                    "preferences.flag showMenuBarIcon", "userInterface.showStatusItem"));
    EXPECT_THAT(newLogLines(), ElementsAre("[INFO] created starter config at " + rulesFile.string(),
                                           "[INFO] Ferrivane 1.2 started (agent)"));
}

TEST_F(AppDelegateTest, SaysInTheLogHowItWasStarted) {
    writeRules("{}");
    start(false);
    EXPECT_THAT(newLogLines(), ElementsAre("[INFO] Ferrivane dev started"));
    start(true);
    EXPECT_THAT(newLogLines(), ElementsAre("[INFO] Ferrivane dev started (agent)"));
}

TEST_F(AppDelegateTest, FindsTheRulesFileAsItIs) {
    writeRules("{ broken");
    start(true);
    EXPECT_EQ(test::readText(rulesFile), "{ broken");
}

TEST_F(AppDelegateTest, GoesOnWithoutAStarterFile) {
    const auto notAFolder = dir / "file";
    test::writeText(notAFolder, "");
    AppDelegate app(fake.platform(), log, true, notAFolder / "rules.json");
    app.applicationDidFinishLaunching();
    EXPECT_THAT(newLogLines(), ElementsAre(HasSubstr("[ERROR] cannot create config: "),
                                           "[INFO] Ferrivane dev started (agent)"));
}

TEST_F(AppDelegateTest, AStartByThePersonShowsTheSettingsAfterASecond) {
    start(false);
    fake.mainLoop.advance(999ms);
    EXPECT_EQ(fake.calls.count(kShowSettings), 0U);
    fake.mainLoop.advance(1ms);
    EXPECT_EQ(fake.calls.count(kShowSettings), 1U);
    fake.mainLoop.advance(1h);
    EXPECT_EQ(fake.calls.count(kShowSettings), 1U);
}

TEST_F(AppDelegateTest, AStartForALinkShowsNoWindow) {
    const struct {
        const char* name;
        std::function<void(AppDelegate&)> arrive;
    } rows[] = {
        {"a link", [](AppDelegate& app) { app.handleGetURL({.urls = {"https://a/"}}); }},
        {"an event without a link", [](AppDelegate& app) { app.handleGetURL({}); }},
        {"a file", [](AppDelegate& app) { app.openFiles({"/a"}, {}); }},
        {"no file at all", [](AppDelegate& app) { app.openFiles({}, {}); }},
    };
    for (const auto& row : rows) {
        fake.calls.clear();
        AppDelegate& app = start(false);
        fake.mainLoop.advance(900ms);
        row.arrive(app);
        fake.mainLoop.advance(1h);
        EXPECT_EQ(fake.calls.count(kShowSettings), 0U) << row.name;
    }
}

TEST_F(AppDelegateTest, ALinkBeforeTheLaunchIsFinishedCounts) {
    delegate.emplace(fake.platform(), log, false, rulesFile);
    delegate->applicationWillFinishLaunching();
    delegate->handleGetURL({.urls = {"https://a/"}});
    delegate->applicationDidFinishLaunching();
    fake.mainLoop.advance(1h);
    EXPECT_EQ(fake.calls.count(kShowSettings), 0U);
}

TEST_F(AppDelegateTest, TheAgentNeverShowsAWindowByItself) {
    start(true);
    fake.mainLoop.advance(1h);
    EXPECT_EQ(fake.calls.count(kShowSettings), 0U);
}

TEST_F(AppDelegateTest, ReopeningShowsTheSettingsEachTime) {
    AppDelegate& app = start(true);
    app.reopen({});
    app.reopen("token");
    EXPECT_THAT(fake.calls.of({kShowSettings}),
                ElementsAre(kShowSettings, std::string(kShowSettings) + " token"));
}

TEST_F(AppDelegateTest, TheIconIsShownAsThePersonChose) {
    start(true);
    EXPECT_EQ(fake.userInterface.statusItem, std::nullopt) << "never chosen";
    fake.preferences.flags["showMenuBarIcon"] = true;
    start(true);
    EXPECT_EQ(fake.userInterface.statusItem, MenuBar::item());
}

TEST_F(AppDelegateTest, BothMenusOpenTheSettings) {
    fake.preferences.flags["showMenuBarIcon"] = true;
    start(true);
    fake.userInterface.performOfMainMenu(Command::settings);
    fake.userInterface.performOfStatusItem(Command::settings);
    EXPECT_EQ(fake.calls.count(kShowSettings), 2U);
    fake.userInterface.performOfMainMenu(Command::about);
    EXPECT_EQ(fake.calls.count(kShowSettings), 2U) << "that one is the toolkit's";
}

TEST_F(AppDelegateTest, TheMainMenuQuits) {
    start(true);
    fake.userInterface.performOfMainMenu(Command::quit);
    fake.mainLoop.advance(1ms);
    EXPECT_TRUE(fake.mainLoop.isStopped());
}

TEST_F(AppDelegateTest, TheSettingsAreReadAnewEachTimeTheyAreShown) {
    writeRules(R"({"defaultProfile": "One"})");
    AppDelegate& app = start(true);
    app.showSettings();
    SettingsView* const view = fake.userInterface.settings;
    EXPECT_EQ(view->store().config().defaultProfile, "One");
    writeRules(R"({"defaultProfile": "Two"})");
    app.showSettings();
    EXPECT_EQ(fake.userInterface.settings, view);
    EXPECT_EQ(view->store().config().defaultProfile, "Two");
}

TEST_F(AppDelegateTest, ActionsOfTheDesktopEntry) {
    AppDelegate& app = start(true);
    fake.calls.clear();
    EXPECT_TRUE(app.performAction("settings", "token"));
    EXPECT_TRUE(app.performAction("edit-rules", {}));
    EXPECT_TRUE(app.performAction("show-log", {}));
    EXPECT_FALSE(app.performAction("", {}));
    EXPECT_FALSE(app.performAction("quit", {}));
    EXPECT_THAT(fake.calls.of({"userInterface."}),
                ElementsAre(std::string(kShowSettings) + " token",
                            "userInterface.openDocument " + Config::fileURL().string(),
                            "userInterface.openDocument " + log.fileURL.string()));
}

TEST_F(AppDelegateTest, QuittingWaitsForTheLinksThatItTook) {
    fake.preferences.flags["showMenuBarIcon"] = true;
    fake.browser.launchTakes = 100ms;
    AppDelegate& app = start(true);
    app.handleGetURL({.urls = {"https://a/", "https://b/"}});
    fake.userInterface.performOfStatusItem(Command::quit);
    fake.mainLoop.advance(150ms);
    EXPECT_FALSE(fake.mainLoop.isStopped());
    EXPECT_EQ(fake.calls.count("session.leave"), 1U) << "and takes no more";
    fake.mainLoop.advance(100ms);
    EXPECT_TRUE(fake.mainLoop.isStopped());
    EXPECT_EQ(fake.calls.count("browser.launch"), 2U);
}

TEST_F(AppDelegateTest, EndsWithTheSession) {
    writeRules("{}");
    AppDelegate& app = start(true);
    newLogLines();
    app.sessionEnded();
    app.sessionEnded();
    fake.mainLoop.advance(0ms);
    EXPECT_TRUE(fake.mainLoop.isStopped());
    EXPECT_THAT(newLogLines(), ElementsAre("[INFO] the session has ended; ending too"));
}

}  // namespace
}  // namespace ferrivane
