// The other tests rest on the fake desktop's clock and its list of calls.
#include <gmock/gmock.h>

#include "tests/support/FakePlatform.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(FakePlatform, WorkIsDoneAtItsTimeAndInTheOrderOfAsking) {
    test::FakePlatform fake;
    const auto note = [&](const char* text) { return [&fake, text] { fake.calls.add(text); }; };
    fake.mainLoop.after(20ms, note("second"));
    fake.mainLoop.after(10ms, note("first"));
    fake.mainLoop.after(20ms, note("third"));
    fake.mainLoop.after(30ms, [&] { fake.mainLoop.after(0ms, note("fourth")); });
    fake.mainLoop.advance(15ms);
    EXPECT_THAT(fake.calls.timedTexts(), ElementsAre("10 ms: first"));
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(fake.calls.timedTexts(),
                ElementsAre("10 ms: first", "20 ms: second", "20 ms: third", "30 ms: fourth"));
    EXPECT_EQ(fake.mainLoop.elapsed(), 30ms);
}

TEST(FakePlatform, NothingRunsBeforeTheCallThatAskedForItReturns) {
    test::FakePlatform fake;
    fake.mainLoop.after(0ms, [&] { fake.calls.add("done"); });
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
    fake.mainLoop.advance(0ms);
    EXPECT_THAT(fake.calls.texts(), ElementsAre("done"));
}

TEST(FakePlatform, ClockStandsStillByItself) {
    const test::FakePlatform fake;
    const auto before = fake.mainLoop.now();
    EXPECT_EQ(fake.mainLoop.now(), before);
}

TEST(FakePlatform, AbandonedRelayIsHeardNoMore) {
    test::FakePlatform fake;
    bool ended = false;
    const auto relay = fake.browser.startRelay("/chrome", {}, [&](int) { ended = true; });
    fake.browser.abandonRelay(relay.value());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(ended);
}

}  // namespace
}  // namespace ferrivane
