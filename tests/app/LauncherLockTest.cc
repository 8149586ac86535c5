// One hand-over or start at a time, across processes.
#include <gmock/gmock.h>

#include "tests/app/LauncherTest.h"
#include "tests/support/FakeChrome.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kNotWaiting =
    "[WARN] another link has been on its way for 10 s; not waiting for it";

class LauncherLock : public test::LauncherTest {};

TEST_F(LauncherLock, NothingIsAskedOfTheBrowserBeforeItIsHeld) {
    fake.launchLock.heldElsewhere = true;
    open(test::linkAlone(kLink));
    fake.mainLoop.advance(5s);
    EXPECT_THAT(fake.calls.of({"browser."}), IsEmpty());
    fake.launchLock.heldElsewhere = false;
    fake.mainLoop.advance(2ms);
    EXPECT_THAT(outcomes, ElementsAre("launched Chrome (pid 500)"));
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherLock, IsHeldFromTheFirstQuestionToTheOutcome) {
    const std::vector<std::string> ports{"launchLock.", "browser.running", "browser.launch",
                                         "browser.startRelay"};
    test::FakeChrome chrome(dir.path());
    const struct {
        const char* name;
        std::function<void()> arrange;
        std::vector<std::string> calls;
    } rows[] = {
        {"hand-over",
         [&] { fake.browser.process = kChrome; },
         {"launchLock.tryAcquire", "browser.running", "launchLock.release"}},
        {"relay",
         [&] { chrome.crash(); },
         {"launchLock.tryAcquire", "browser.running", "browser.startRelay /opt/chrome/chrome [x:]",
          "launchLock.release"}},
        {"cold launch",
         [&] {
             fake.browser.process = std::nullopt;
             fake.browser.launchTakes = 4s;
         },
         {"launchLock.tryAcquire", "browser.running",
          "browser.launch /apps/google-chrome.desktop [x:]", "launchLock.release"}},
    };
    for (const auto& row : rows) {
        row.arrange();
        fake.calls.clear();
        outcomeOf(test::linkAlone("x:"));
        EXPECT_EQ(fake.calls.of(ports), row.calls) << row.name;
    }
}

TEST_F(LauncherLock, IsFreeOnceAnOutcomeIsKnown) {
    const struct {
        const char* name;
        std::function<void()> arrange;
    } rows[] = {
        {"launched", [] {}},
        {"launch refused", [&] { fake.browser.launched = std::unexpected(PlatformError{"no"}); }},
        {"relay ended", [&] { fake.browser.process = kChrome; }},
        {"relay refused", [&] { fake.browser.relay = std::unexpected(PlatformError{"no"}); }},
        {"no executable", [&] { fake.applications.executables.clear(); }},
    };
    for (const auto& row : rows) {
        row.arrange();
        bool heldAtOutcome = true;
        ChromeLauncher::open(fake.platform(), log, test::linkAlone(kLink),
                             [&](const auto&) { heldAtOutcome = fake.launchLock.held; });
        fake.mainLoop.runUntilIdle();
        EXPECT_FALSE(heldAtOutcome) << row.name;
        EXPECT_EQ(fake.calls.count("launchLock.release of a lock that is not held"), 0U)
            << row.name;
    }
}

TEST_F(LauncherLock, IsNotTakenForWhatCannotBeOpened) {
    outcomeOf(test::linkAlone("-x"));
    fake.applications.locations.clear();
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(fake.calls.of({"launchLock."}), IsEmpty());
}

TEST_F(LauncherLock, SecondLinkWaitsForTheFirst) {
    fake.browser.launchTakes = 300ms;
    open(test::linkAlone("https://first/"));
    open(test::linkAlone("https://second/"));
    fake.mainLoop.advance(299ms);
    EXPECT_EQ(fake.calls.count("browser.launch"), 1U);
    fake.browser.launched = 501;
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(fake.calls.count("browser.launch"), 2U);
    EXPECT_EQ(outcomes.size(), 2U);
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherLock, IsNotWaitedForLongerThanTenSeconds) {
    fake.launchLock.heldElsewhere = true;
    open(test::linkAlone(kLink));
    fake.mainLoop.advance(9'999ms);
    EXPECT_THAT(outcomes, IsEmpty());
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(outcomes, ElementsAre("launched Chrome (pid 500)"));
    EXPECT_THAT(newLogLines(), ElementsAre(kNotWaiting));
    EXPECT_THAT(fake.calls.of({"launchLock.release"}), IsEmpty());
}

TEST_F(LauncherLock, ThatComesFreeAtTheLastMomentIsTakenWithoutAWarning) {
    fake.launchLock.heldElsewhere = true;
    open(test::linkAlone(kLink));
    fake.mainLoop.advance(9'998ms);
    fake.launchLock.heldElsewhere = false;
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(outcomes, ElementsAre("launched Chrome (pid 500)"));
    EXPECT_THAT(newLogLines(), IsEmpty());
    EXPECT_EQ(fake.calls.count("launchLock.release"), 1U);
}

TEST_F(LauncherLock, NeverBlocksTheMainLoop) {
    fake.launchLock.heldElsewhere = true;
    bool ran = false;
    open(test::linkAlone(kLink));
    fake.mainLoop.after(100ms, [&] { ran = true; });
    fake.mainLoop.advance(100ms);
    EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace ferrivane
