#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "core/support/SerialQueue.h"
#include "tests/support/Child.h"

namespace ferrivane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(SerialQueue, RunsJobsOneAtATimeInOrder) {
    SerialQueue queue("test");
    EXPECT_EQ(queue.label(), "test");
    std::vector<int> order;
    std::atomic<int> atOnce = 0;
    std::atomic<bool> overlapped = false;
    for (int i = 0; i < 1000; ++i) {
        queue.async([&, i] {
            if (++atOnce > 1) overlapped = true;
            order.push_back(i);
            --atOnce;
        });
    }
    ASSERT_TRUE(queue.drain(seconds(60)));
    ASSERT_EQ(order.size(), 1000U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
    EXPECT_FALSE(overlapped);
}

TEST(SerialQueue, TakesJobsFromSeveralThreadsAndFromJobs) {
    SerialQueue queue("test");
    std::atomic<int> count = 0;
    std::array<std::thread, 8> threads;
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int j = 0; j < 200; ++j) {
                queue.async([&] { queue.async([&] { ++count; }); });
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_TRUE(queue.drain(seconds(60)));
    EXPECT_EQ(count, 1600);
}

TEST(SerialQueue, DrainGivesUpAfterItsLimit) {
    SerialQueue queue("test");
    EXPECT_TRUE(queue.drain(milliseconds(0))) << "nothing was given yet";
    std::promise<void> release;
    queue.async([future = release.get_future().share()] { future.wait(); });
    EXPECT_FALSE(queue.drain(milliseconds(20))) << "the job is running";
    queue.async([] {});
    EXPECT_FALSE(queue.drain(milliseconds(20)));
    release.set_value();
    EXPECT_TRUE(queue.drain(seconds(60)));
}

TEST(SerialQueue, TheEndWaitsForWhatIsQueued) {
    int count = 0;
    {
        SerialQueue queue("test");
        for (int i = 0; i < 100; ++i) queue.async([&] { ++count; });
    }
    EXPECT_EQ(count, 100);
    {
        const SerialQueue unused("test");
    }
}

TEST(SerialQueue, WhereNoThreadIsLeftTheCallerRunsTheJobs) {
    const std::string happened = test::inChild([] {
        test::becomeUnprivileged();
        const rlimit none{};
        if (::setrlimit(RLIMIT_NPROC, &none) != 0) return std::string("no limit");
        std::string done;
        SerialQueue queue("test");
        queue.async([&] {
            queue.async([&] { done += "second "; });
            done += "first ";
        });
        queue.async([&] { done += "third "; });
        return done + (queue.drain(milliseconds(0)) ? "drained" : "not drained");
    });
    EXPECT_EQ(happened, "first second third drained");
}

TEST(SerialQueue, ItsThreadTakesNoSignals) {
    SerialQueue queue("test");
    sigset_t mask;
    ::sigemptyset(&mask);
    queue.async([&] { ::pthread_sigmask(SIG_SETMASK, nullptr, &mask); });
    ASSERT_TRUE(queue.drain(seconds(60)));
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGALRM}) {
        EXPECT_EQ(::sigismember(&mask, signal), 1) << signal;
    }
    sigset_t own;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(::sigismember(&own, SIGTERM), 0) << "the caller's own mask is as it was";
}

}  // namespace
}  // namespace ferrivane
