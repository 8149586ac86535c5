#include <gmock/gmock.h>

#include "tests/app/LauncherTest.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LauncherRoute : public test::LauncherTest {};

TEST_F(LauncherRoute, NoChromeRunningIsAColdLaunch) {
    EXPECT_EQ(outcomeOf({.url = kLink, .profileDirectory = "Profile 2", .activationToken = "tok"}),
              "launched Chrome (pid 500)");
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("applications.location com.google.Chrome", "launchLock.tryAcquire",
                            "browser.running",
                            "browser.launch /apps/google-chrome.desktop "
                            "[--profile-directory=Profile 2] [https://work.example/a] token=tok",
                            "launchLock.release"));
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherRoute, ColdLaunchWithoutAProfileHasTheLinkAsItsOnlySwitch) {
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(fake.browser.given->switches, ElementsAre(kLink));
    EXPECT_EQ(fake.browser.given->activationToken, std::nullopt);
}

TEST_F(LauncherRoute, ColdLaunchIsOverWhenTheDesktopReportsBack) {
    fake.browser.launchTakes = std::chrono::milliseconds(900);
    open(test::linkAlone(kLink));
    fake.mainLoop.advance(std::chrono::milliseconds(899));
    EXPECT_THAT(outcomes, IsEmpty());
    fake.mainLoop.advance(std::chrono::milliseconds(1));
    EXPECT_THAT(outcomes, ElementsAre("launched Chrome (pid 500)"));
}

TEST_F(LauncherRoute, ColdLaunchOfAnUnknownProcessSaysZero) {
    fake.browser.launched = 0;
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)), "launched Chrome (pid 0)");
}

TEST_F(LauncherRoute, ColdLaunchFailsInTheDesktopsWords) {
    fake.browser.launched =
        std::unexpected(PlatformError{"cannot start /opt/chrome/chrome: Argument list too long"});
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)),
              "error: cannot start /opt/chrome/chrome: Argument list too long");
    EXPECT_FALSE(fake.launchLock.held);
}

TEST_F(LauncherRoute, ChromeIsNotTouchedAfterAColdLaunch) {
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(fake.calls.of({"frontmost."}), IsEmpty());
}

TEST_F(LauncherRoute, NoChromeInstalledIsAnErrorBeforeAnythingIsTried) {
    fake.applications.locations.clear();
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)), "error: Google Chrome is not installed");
    EXPECT_THAT(fake.calls.texts(), ElementsAre("applications.location com.google.Chrome"));
}

TEST_F(LauncherRoute, RunningChromeWithoutAnExecutableIsAnError) {
    fake.browser.process = kChrome;
    fake.applications.executables.clear();
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)),
              "error: no executable inside /apps/google-chrome.desktop");
    EXPECT_FALSE(fake.launchLock.held);
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherRoute, TwoLinksUnderWayTogetherHaveAnOutcomeEach) {
    fake.browser.launchTakes = std::chrono::milliseconds(10);
    open(test::linkAlone("https://a/"));
    open(test::linkAlone("https://b/"));
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(outcomes.size(), 2U);
    EXPECT_THAT(fake.calls.of({"browser.launch"}),
                ElementsAre("browser.launch /apps/google-chrome.desktop [https://a/]",
                            "browser.launch /apps/google-chrome.desktop [https://b/]"));
}

}  // namespace
}  // namespace ferrivane
