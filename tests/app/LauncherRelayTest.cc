// Chrome's own executable as the carrier of a link that its socket did not take.
#include <gmock/gmock.h>

#include "tests/app/LauncherTest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kNoSocket =
    "[WARN] singleton socket not used (no singleton socket in Chrome's user data directory); "
    "starting Chrome's binary instead";

class LauncherRelay : public test::LauncherTest {
  protected:
    LauncherRelay() { fake.browser.process = kChrome; }
};

TEST_F(LauncherRelay, TakesTheRoadStepByStep) {
    EXPECT_EQ(outcomeOf({.url = kLink, .profileDirectory = "Profile 2", .activationToken = "tok"}),
              "handed to running Chrome (pid 42); helper exited 0");
    EXPECT_THAT(
        fake.calls.timedTexts(),
        ElementsAre("0 ms: applications.location com.google.Chrome", "0 ms: launchLock.tryAcquire",
                    "0 ms: browser.running",
                    "0 ms: applications.executable /apps/google-chrome.desktop",
                    "0 ms: browser.startRelay /opt/chrome/chrome [--profile-directory=Profile 2] "
                    "[https://work.example/a] token=tok",
                    "0 ms: browser.isRunning 600", "50 ms: launchLock.release",
                    "450 ms: frontmost.current"));
    EXPECT_THAT(newLogLines(), ElementsAre(kNoSocket));
}

TEST_F(LauncherRelay, EveryExitStatusCountsAsSuccess) {
    const struct {
        int status;
        const char* outcome;
    } rows[] = {
        {0, "handed to running Chrome (pid 42); helper exited 0"},
        {1, "handed to running Chrome (pid 42); helper exited 1"},
        {21, "handed to running Chrome (pid 42); helper exited 21"},
        {137, "handed to running Chrome (pid 42); helper exited 137"},
    };
    for (const auto& row : rows) {
        fake.browser.relayStatus = row.status;
        EXPECT_EQ(outcomeOf(test::linkAlone(kLink)), row.outcome);
    }
}

TEST_F(LauncherRelay, LinkBeyondTheSystemsLimitFailsInTheSystemsWords) {
    const std::string link = "https://work.example/" + std::string(1 << 20, 'x');
    fake.browser.relay =
        std::unexpected(PlatformError{"cannot start /opt/chrome/chrome: Argument list too long"});
    EXPECT_EQ(outcomeOf(test::linkAlone(link)),
              "error: cannot start /opt/chrome/chrome: Argument list too long");
    EXPECT_THAT(fake.browser.given->switches, ElementsAre(link));
    EXPECT_FALSE(fake.launchLock.held);
    EXPECT_THAT(fake.calls.of({"frontmost.", "browser.isRunning"}), IsEmpty());
}

TEST_F(LauncherRelay, ThatBecomesTheBrowserIsALaunch) {
    fake.browser.relayTakes = 1h;
    fake.mainLoop.after(150ms, [this] { fake.browser.answeringAsChrome.insert(600); });
    open(test::linkAlone(kLink));
    fake.mainLoop.advance(199ms);
    EXPECT_THAT(outcomes, IsEmpty());
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(outcomes, ElementsAre("launched Chrome (pid 600)"));
    EXPECT_THAT(fake.calls.texts(), Contains("browser.abandonRelay 600"));
    EXPECT_FALSE(fake.launchLock.held);

    // Its end, whenever it comes, is no news about this link.
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(outcomes.size(), 1U);
    EXPECT_THAT(fake.calls.of({"frontmost."}), IsEmpty());
}

TEST_F(LauncherRelay, AnotherProcessThatBecomesTheBrowserIsNoOutcome) {
    fake.browser.relayTakes = 2s;
    fake.browser.answeringAsChrome.insert(700);
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)),
              "handed to running Chrome (pid 42); helper exited 0");
}

TEST_F(LauncherRelay, ThatEndsJustInTimeIsWaitedFor) {
    fake.browser.relayTakes = 29'999ms;
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)),
              "handed to running Chrome (pid 42); helper exited 0");
    EXPECT_THAT(fake.calls.of({"browser.abandonRelay"}), IsEmpty());
}

TEST_F(LauncherRelay, ThatNeverEndsIsLeftAloneAfterThirtySeconds) {
    fake.browser.relayTakes = std::nullopt;
    open(test::linkAlone(kLink));
    fake.mainLoop.advance(29'999ms);
    EXPECT_THAT(outcomes, IsEmpty());
    EXPECT_TRUE(fake.launchLock.held);
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(outcomes, ElementsAre("handed to running Chrome (pid 42); helper still running"));
    EXPECT_THAT(fake.calls.texts(), Contains("browser.abandonRelay 600"));
    EXPECT_FALSE(fake.launchLock.held);

    fake.calls.clear();
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(fake.calls.timedTexts(), ElementsAre("30400 ms: frontmost.current"));
    EXPECT_EQ(outcomes.size(), 1U);
}

TEST_F(LauncherRelay, EachLinkThatCannotUseTheSocketSaysSo) {
    outcomeOf(test::linkAlone("https://a/"));
    outcomeOf(test::linkAlone("https://b/"));
    EXPECT_THAT(newLogLines(), ElementsAre(kNoSocket, kNoSocket));
}

}  // namespace
}  // namespace ferrivane
