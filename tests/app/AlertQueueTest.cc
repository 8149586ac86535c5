// Alerts that stop whoever shows them.
#include <gmock/gmock.h>

#include "Ferrivane/AlertQueue.h"
#include "tests/support/FakePlatform.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

LaunchFailureAlert alertFor(std::string link) {
    return {
        .title = {}, .reason = {}, .link = std::move(link), .informativeText = {}, .buttons = {}};
}

struct AlertQueueTest : ::testing::Test {
    test::FakePlatform fake;
    std::vector<std::string> shown;
    std::function<void()> whileOpen = [] {};
    AlertQueue queue{fake.mainLoop, [this](const LaunchFailureAlert& alert) {
                         shown.push_back(alert.link);
                         whileOpen();
                     }};
};

TEST_F(AlertQueueTest, WhoeverTellsOfAFailureGoesOn) {
    queue.add(alertFor("a"));
    EXPECT_THAT(shown, IsEmpty());
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(shown, ElementsAre("a"));
}

TEST_F(AlertQueueTest, OneIsClosedBeforeTheNextOneOpens) {
    whileOpen = [this] {
        if (shown.size() > 1) return;
        queue.add(alertFor("b"));
        queue.add(alertFor("c"));
        fake.mainLoop.runUntilIdle();
        EXPECT_THAT(shown, ElementsAre("a"));
    };
    queue.add(alertFor("a"));
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(shown, ElementsAre("a", "b", "c"));
    queue.add(alertFor("d"));
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(shown, ElementsAre("a", "b", "c", "d"));
}

TEST_F(AlertQueueTest, SomeHundredsAreNotShown) {
    for (std::size_t i = 0; i < 3 * AlertQueue::mostWaiting; ++i) queue.add(alertFor("a"));
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown.size(), AlertQueue::mostWaiting);
}

}  // namespace
}  // namespace ferrivane
