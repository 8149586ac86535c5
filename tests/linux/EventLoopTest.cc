#include <algorithm>

#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/EventLoop.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using ::testing::UnorderedElementsAre;

// A child that ends with this status as soon as it can.
pid_t endingWith(int status) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(status);
    return child;
}

class EventLoopTest : public ::testing::Test {
  protected:
    std::function<void()> note(const std::string& name) {
        return [this, name] { happened.push_back(name); };
    }
    std::function<void(int)> noteStatus(const std::string& name) {
        return
            [this, name](int status) { happened.push_back(name + " " + std::to_string(status)); };
    }

    EventLoop loop;
    Names happened;
};

TEST_F(EventLoopTest, NothingToWaitFor) {
    loop.runUntilIdle();
    loop.runUntilIdle();
}

TEST_F(EventLoopTest, TimersByTimeThenByOrder) {
    const auto before = loop.now();
    loop.after(100ms, note("third"));
    loop.after(0ms, note("first"));
    loop.after(0ms, note("second"));
    loop.after(200ms, note("last"));
    loop.after(-5s, note("before all"));
    EXPECT_TRUE(happened.empty()) << "never before the call returns";
    loop.runUntilIdle();
    EXPECT_EQ(happened, (Names{"before all", "first", "second", "third", "last"}));
    EXPECT_GE(loop.now() - before, 200ms);
}

TEST_F(EventLoopTest, TimersThatSetTimers) {
    int count = 0;
    const std::function<void()> again = [&] {
        if (++count < 1000) loop.after(0ms, again);
    };
    loop.after(0ms, again);
    loop.after(0ms, [&] { loop.after(0ms, note("one more")); });
    loop.runUntilIdle();
    EXPECT_EQ(count, 1000);
    EXPECT_EQ(happened, Names{"one more"});
}

TEST_F(EventLoopTest, ATimerThatRepeatsDoesNotHoldOthersUp) {
    bool isOver = false;
    const std::function<void()> again = [&] {
        if (!isOver) loop.after(0ms, again);
    };
    loop.after(0ms, again);
    loop.after(20ms, [&] { isOver = true; });
    loop.watchChild(endingWith(3), noteStatus("child"));
    loop.runUntilIdle();
    EXPECT_EQ(happened, Names{"child 3"});
}

TEST_F(EventLoopTest, EndsOfChildren) {
    loop.watchChild(endingWith(0), noteStatus("well"));
    loop.runUntilIdle();
    loop.watchChild(endingWith(7), noteStatus("badly"));
    loop.runUntilIdle();
    const pid_t signalled = ::fork();
    if (signalled == 0) {
        ::raise(SIGKILL);
        ::_exit(1);
    }
    loop.watchChild(signalled, noteStatus("killed"));
    loop.runUntilIdle();
    EXPECT_EQ(happened, (Names{"well 0", "badly 7", "killed 137"}));
    EXPECT_EQ(::waitpid(signalled, nullptr, WNOHANG), -1) << "it has been collected";
}

TEST_F(EventLoopTest, AChildThatEndedBeforeItIsWatched) {
    const pid_t child = endingWith(5);
    ASSERT_TRUE(test::waitUntil([&] { return test::isGone(child); }));
    loop.watchChild(child, noteStatus("child"));
    EXPECT_TRUE(happened.empty());
    loop.runUntilIdle();
    EXPECT_EQ(happened, Names{"child 5"});
}

TEST_F(EventLoopTest, ManyChildrenAndTimersBetween) {
    for (int i = 0; i < 20; ++i) loop.watchChild(endingWith(i), noteStatus("child"));
    for (int i = 0; i < 20; ++i) loop.after(std::chrono::milliseconds(i), note("timer"));
    loop.runUntilIdle();
    EXPECT_EQ(happened.size(), 40U);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(std::ranges::count(happened, "child " + std::to_string(i)), 1);
    }
}

TEST_F(EventLoopTest, ItIsNotIdleBeforeAWatchedChildHasEnded) {
    test::Program program({"cat"});
    bool hasEnded = false;
    loop.watchChild(program.pid(), [&](int) { hasEnded = true; });
    loop.after(10ms, [&] {
        EXPECT_FALSE(hasEnded);
        program.closeInput();
    });
    loop.runUntilIdle();
    EXPECT_TRUE(hasEnded);
}

TEST_F(EventLoopTest, AForgottenChildIsNotWaitedFor) {
    test::Program program({"cat"});
    loop.watchChild(program.pid(), noteStatus("child"));
    loop.after(0ms, [&] { loop.forgetChild(program.pid()); });
    loop.runUntilIdle();
    EXPECT_TRUE(happened.empty());
    EXPECT_FALSE(test::isGone(program.pid()));
    loop.forgetChild(program.pid());
    loop.forgetChild(0);
}

TEST_F(EventLoopTest, AForgottenChildIsCollectedOnceItHasEnded) {
    const pid_t child = endingWith(5);
    loop.watchChild(child, noteStatus("child"));
    loop.forgetChild(child);
    EXPECT_TRUE(loop.isIdle());
    EXPECT_TRUE(test::waitUntil([&] {
        loop.after(0ms, [] {});
        loop.runUntilIdle();
        return ::kill(child, 0) != 0;
    })) << "there is nothing left to collect";
    EXPECT_EQ(happened, Names{});
}

TEST_F(EventLoopTest, AChildThatIsForgottenWhenAnotherEnds) {
    const pid_t first = endingWith(1);
    const pid_t second = endingWith(2);
    ASSERT_TRUE(test::waitUntil([&] { return test::isGone(first) && test::isGone(second); }));
    loop.watchChild(first, [&](int) {
        happened.emplace_back("first");
        loop.forgetChild(second);
    });
    loop.watchChild(second, [&](int) {
        happened.emplace_back("second");
        loop.forgetChild(first);
    });
    loop.runUntilIdle();
    EXPECT_EQ(happened.size(), 1U);
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
}

TEST_F(EventLoopTest, AChildThatIsWatchedWhenAnotherEnds) {
    loop.watchChild(endingWith(1),
                    [&](int) { loop.watchChild(endingWith(2), noteStatus("next")); });
    loop.runUntilIdle();
    EXPECT_EQ(happened, Names{"next 2"});
}

TEST_F(EventLoopTest, NoDescriptorIsLeft) {
    const std::size_t before = test::openDescriptors();
    for (int i = 0; i < 5; ++i) loop.watchChild(endingWith(i), noteStatus("child"));
    loop.runUntilIdle();
    EXPECT_EQ(test::openDescriptors(), before);
}

TEST_F(EventLoopTest, WithoutAnyDescriptorLeftItWaitsAllTheSame) {
    EXPECT_EQ(test::inChild([&] {
                  const pid_t child = endingWith(6);
                  const int next = ::dup(STDERR_FILENO);
                  ::close(next);
                  const rlimit noMore{static_cast<rlim_t>(next), static_cast<rlim_t>(next)};
                  ::setrlimit(RLIMIT_NOFILE, &noMore);
                  loop.watchChild(child, noteStatus("child"));
                  loop.runUntilIdle();
                  return happened.empty() ? "" : happened.front();
              }),
              "child 6");
}

TEST_F(EventLoopTest, SignalsDoNotDisturbIt) {
    struct sigaction action{};
    struct sigaction before{};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, &before);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) {
        for (int i = 0; i < 20; ++i) {
            ::kill(parent, SIGUSR1);
            ::usleep(1000);
        }
        ::_exit(4);
    }
    loop.watchChild(child, noteStatus("child"));
    loop.after(10ms, note("timer"));
    loop.runUntilIdle();
    EXPECT_THAT(happened, UnorderedElementsAre("timer", "child 4"));
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(EventLoopTest, RunsUntilItIsStopped) {
    loop.after(10ms, [this] {
        loop.stop();
        loop.after(1ms, note("late"));
    });
    loop.run();
    EXPECT_TRUE(happened.empty());
    loop.runUntilIdle();
    EXPECT_EQ(happened, Names{"late"});
}

// As a library's loop takes it in.
class EventLoopTakenIn : public EventLoopTest {
  protected:
    EventLoopTakenIn() {
        loop.waitThrough([this] {
            ++rounds;
            pollfd handle{loop.descriptor(), POLLIN, 0};
            ::poll(&handle, 1, loop.timeoutMilliseconds());
            loop.dispatch();
        });
    }

    int rounds = 0;
};

TEST_F(EventLoopTakenIn, DoesTheSameWork) {
    loop.after(30ms, note("timer"));
    loop.watchChild(endingWith(3), noteStatus("child"));
    loop.runUntilIdle();
    EXPECT_THAT(happened, UnorderedElementsAre("child 3", "timer"));
    EXPECT_LE(rounds, 4) << "it waits";
}

TEST_F(EventLoopTakenIn, IsNotIdleWhileRetained) {
    loop.retain();
    loop.retain();
    EXPECT_FALSE(loop.isIdle());
    loop.after(0ms, [this] { loop.release(); });
    loop.after(10ms, [this] { loop.release(); });
    loop.after(20ms, note("after"));
    loop.runUntilIdle();
    EXPECT_EQ(happened, Names{"after"});
    EXPECT_TRUE(loop.isIdle());
}

TEST_F(EventLoopTakenIn, RestsOnceAfterEachPieceOfWork) {
    loop.whenResting([this] {
        happened.emplace_back("rest");
        if (std::ranges::count(happened, "rest") == 2) loop.stop();
        if (happened.size() == 2) loop.after(0ms, note("more work"));
    });
    loop.after(0ms, note("work"));
    const auto before = loop.now();
    loop.run();
    EXPECT_EQ(happened, (Names{"work", "rest", "more work", "rest"}));
    EXPECT_GE(loop.now() - before, 4s);
    EXPECT_EQ(loop.timeoutMilliseconds(), -1) << "and sleeps until there is work";
}

TEST_F(EventLoopTakenIn, WithoutAnyDescriptorLeftItStillAsks) {
    // Sanitizers need descriptors to look at a type for the first time.
    loop.after(0ms, note("before"));
    loop.runUntilIdle();
    happened.clear();
    EXPECT_EQ(test::inChild([&] {
                  const int next = ::dup(STDERR_FILENO);
                  ::close(next);
                  const rlimit noMore{static_cast<rlim_t>(next), static_cast<rlim_t>(next)};
                  ::setrlimit(RLIMIT_NOFILE, &noMore);
                  loop.watchChild(endingWith(6), noteStatus("child"));
                  loop.runUntilIdle();
                  return happened.empty() ? "" : happened.front();
              }),
              "child 6");
}

}  // namespace
}  // namespace ferrivane
