// Bringing Chrome to the front after a hand-over.
#include <gmock/gmock.h>

#include "tests/app/LauncherTest.h"
#include "tests/support/FakeChrome.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LauncherFront : public test::LauncherTest {
  protected:
    LauncherFront() { fake.browser.process = kChrome; }

    std::vector<std::string> frontCalls() const { return fake.calls.of({"frontmost."}); }

    test::FakeChrome chrome{dir.path()};
};

TEST_F(LauncherFront, IsLookedAtFourTenthsOfASecondAfterTheActivation) {
    fake.frontmost.openTakes = 100ms;
    open(test::linkAlone(kLink));
    EXPECT_THAT(outcomes,
                ElementsAre("handed to running Chrome (pid 42) over its singleton socket"));
    fake.calls.clear();
    fake.mainLoop.advance(499ms);
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(fake.calls.timedTexts(), ElementsAre("500 ms: frontmost.current"));
    EXPECT_TRUE(fake.mainLoop.isIdle());
}

TEST_F(LauncherFront, NothingIsDoneWhenChromeIsThereAlready) {
    fake.frontmost.front = {.process = kChrome, .name = "Google Chrome"};
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(frontCalls(),
                ElementsAre("frontmost.open /apps/google-chrome.desktop", "frontmost.current"));
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherFront, NothingIsDoneWhereTheDesktopDoesNotTell) {
    fake.frontmost.front = std::nullopt;
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(frontCalls(),
                ElementsAre("frontmost.open /apps/google-chrome.desktop", "frontmost.current"));
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherFront, OtherwiseChromeIsActivatedAndTheLogSaysSo) {
    using Application = Frontmost::Application;
    const struct {
        const char* name;
        Application front;
        bool handsOver;
        std::vector<std::string> activations;
        const char* line;
    } rows[] = {
        {"another application",
         {.process = 7, .name = "Mail"},
         false,
         {"frontmost.activateHandedOver 42", "frontmost.activate 42"},
         "[WARN] Chrome was not frontmost (front: Mail); activated it (handover=false)"},
        {"another application that hands over",
         {.process = 7, .name = "Mail"},
         true,
         {"frontmost.activateHandedOver 42"},
         "[WARN] Chrome was not frontmost (front: Mail); activated it (handover=true)"},
        {"no application",
         {},
         false,
         {"frontmost.activateHandedOver 42", "frontmost.activate 42"},
         "[WARN] Chrome was not frontmost (front: none); activated it (handover=false)"},
        {"an application without a name",
         {.process = 7, .name = {}},
         false,
         {"frontmost.activateHandedOver 42", "frontmost.activate 42"},
         "[WARN] Chrome was not frontmost (front: none); activated it (handover=false)"},
        {"a window whose process is unknown",
         {.process = {}, .name = "Mail"},
         false,
         {"frontmost.activateHandedOver 42", "frontmost.activate 42"},
         "[WARN] Chrome was not frontmost (front: Mail); activated it (handover=false)"},
        {"another browser of the same name",
         {.process = 43, .name = "Google Chrome"},
         true,
         {"frontmost.activateHandedOver 42"},
         "[WARN] Chrome was not frontmost (front: Google Chrome); activated it (handover=true)"},
    };
    for (const auto& row : rows) {
        fake.calls.clear();
        fake.frontmost.front = row.front;
        fake.frontmost.handsOver = row.handsOver;
        outcomeOf(test::linkAlone(kLink));
        EXPECT_EQ(fake.calls.of({"frontmost.activate"}), row.activations) << row.name;
        EXPECT_THAT(newLogLines(), ElementsAre(row.line)) << row.name;
    }
}

TEST_F(LauncherFront, RefusedActivationChangesNothingInTheLog) {
    fake.frontmost.front = {.process = 7, .name = "Mail"};
    fake.frontmost.activates = false;
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(newLogLines(),
                ElementsAre("[WARN] Chrome was not frontmost (front: Mail); activated it "
                            "(handover=false)"));
}

TEST_F(LauncherFront, FailedActivationIsLoggedAndTheCheckFollowsAllTheSame) {
    fake.frontmost.opened = std::unexpected(PlatformError{"the desktop said no"});
    fake.frontmost.front = {.process = 7, .name = "Mail"};
    fake.frontmost.handsOver = true;
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)),
              "handed to running Chrome (pid 42) over its singleton socket");
    EXPECT_THAT(
        newLogLines(),
        ElementsAre("[WARN] could not activate Chrome: the desktop said no",
                    "[WARN] Chrome was not frontmost (front: Mail); activated it (handover=true)"));
}

TEST_F(LauncherFront, RelayIsFollowedByTheCheckAloneFromItsEndOn) {
    chrome.crash();
    fake.browser.relayTakes = 50ms;
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(fake.calls.of({"frontmost."}), ElementsAre("frontmost.current"));
    EXPECT_EQ(fake.calls.timedTexts().back(), "450 ms: frontmost.current");
}

}  // namespace
}  // namespace ferrivane
