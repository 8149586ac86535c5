// The main loop over a run loop.
#include <gmock/gmock.h>

#import "Ferrivane/macos/MacMainLoop.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct MacMainLoopTest : ::testing::Test {
    MacMainLoop loop;
    std::vector<std::string> done;

    std::function<void()> note(std::string text) {
        return [this, text = std::move(text)] { done.push_back(text); };
    }
};

TEST_F(MacMainLoopTest, WorkIsDoneInTheOrderOfItsTimes) {
    loop.after(50ms, note("late"));
    loop.after({}, note("first"));
    loop.after({}, note("second"));
    EXPECT_THAT(done, IsEmpty());
    loop.runUntilIdle();
    EXPECT_THAT(done, ElementsAre("first", "second", "late"));
}

TEST_F(MacMainLoopTest, ADelayIsNotShorterThanAsked) {
    const auto start = loop.now();
    loop.after(100ms, [] {});
    loop.runUntilIdle();
    EXPECT_GE(loop.now() - start, 95ms);
}

TEST_F(MacMainLoopTest, WorkOfAnotherThreadIsWaitedForAndDoneOnThisOne) {
    const auto arrived = loop.awaiting<int>([this](int value) {
        done.push_back(std::to_string(value) + (NSThread.isMainThread ? " main" : " other"));
    });
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0), ^{
      arrived(7);
    });
    loop.runUntilIdle();
    EXPECT_THAT(done, ElementsAre("7 main"));
}

// An alert is such a piece of work: links go on coming and going behind it.
TEST_F(MacMainLoopTest, WorkThatRunsTheLoopKeepsNobodyWaiting) {
    loop.after({}, [this] {
        loop.after({}, note("timer"));
        loop.awaiting<int>([this](int) { done.push_back("queue"); })(0);
        loop.runUntilIdle();
        done.push_back("outer");
    });
    loop.runUntilIdle();
    EXPECT_EQ(done.back(), "outer");
    EXPECT_EQ(done.size(), 3U);
}

TEST_F(MacMainLoopTest, WhoeverIsToldOfTheEndEndsIt) {
    int stopped = 0;
    loop.whenStopped([&] { ++stopped; });
    loop.stop();
    EXPECT_EQ(stopped, 1);
}

TEST_F(MacMainLoopTest, AStopBeforeTheRunEndsIt) {
    loop.stop();
    loop.run();
    SUCCEED() << "the run has returned";
}

TEST_F(MacMainLoopTest, AStopEndsARunningApplication) {
    loop.after(50ms, [this] { loop.stop(); });
    loop.run();
    loop.after(50ms, [this] { loop.stop(); });
    loop.run();
    SUCCEED() << "twice";
}

}  // namespace
}  // namespace ferrivane
