// A signal that arrives during the exchange must not look like a Chrome that did not answer: the
// link would be opened twice.
#include <atomic>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include "core/ChromeSingleton.h"
#include "tests/support/Child.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using std::chrono::milliseconds;
using test::FakeChrome;
using test::outcomeOf;

const std::vector<std::string> kArgv{"/opt/chrome", "https://a.b/"};
volatile sig_atomic_t alarms = 0;

class SingletonSignals : public ::testing::Test {
  protected:
    const test::TempDir dir;
    FakeChrome chrome{dir.path()};
};

// SIGALRM every millisecond, interrupting system calls, as long as the object lives.
class SignalStorm {
  public:
    SignalStorm() {
        alarms = 0;
        struct sigaction action{};
        action.sa_handler = [](int) { alarms = alarms + 1; };  // without SA_RESTART
        ::sigaction(SIGALRM, &action, nullptr);
        set(1000);
    }
    ~SignalStorm() {
        set(0);  // the handler stays: a last one may be on its way
    }
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

  private:
    static void set(suseconds_t interval) {
        const itimerval timer{{0, interval}, {0, interval}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

TEST_F(SingletonSignals, AStormOfThemDisturbsNoExchange) {
    chrome.behave({.beforeAnswer = milliseconds(1)});
    std::string failures;
    int exchanges = 0;
    {
        const SignalStorm storm;
        while (exchanges < 200 || alarms < 50) {
            ++exchanges;
            const std::string outcome =
                outcomeOf(ChromeSingleton::notify(kArgv, chrome.socketPath(), 5));
            if (outcome != "ok") failures += outcome + "\n";
        }
    }
    EXPECT_EQ(failures, "");
    EXPECT_EQ(chrome.messages().size(), static_cast<std::size_t>(exchanges));
}

TEST_F(SingletonSignals, TheyArriveOnceTheExchangeIsOver) {
    struct sigaction action{};
    struct sigaction before{};
    action.sa_handler = [](int) { alarms = alarms + 1; };
    ::sigaction(SIGUSR1, &action, &before);
    alarms = 0;
    sigset_t maskBefore;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &maskBefore);

    chrome.behave(FakeChrome::neverAnswers());
    const pthread_t caller = ::pthread_self();
    std::thread sender([&] {
        chrome.waitForMessages(1);
        ::pthread_kill(caller, SIGUSR1);
    });
    EXPECT_EQ(outcomeOf(ChromeSingleton::notify(kArgv, chrome.socketPath(), 1)),
              "Chrome did not answer");
    sender.join();
    EXPECT_EQ(alarms, 1);

    sigset_t maskAfter;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &maskAfter);
    for (int signal = 1; signal < 32; ++signal) {
        EXPECT_EQ(::sigismember(&maskAfter, signal), ::sigismember(&maskBefore, signal)) << signal;
    }
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(SingletonSignals, AProcessThatIsStoppedAndContinuedGetsItsAnswer) {
    chrome.behave({.beforeAnswer = milliseconds(400)});
    for (const double timeout : {0.0, 30.0, 9.2e18}) {
        const std::size_t before = chrome.messages().size();
        test::Child child(
            [&] { return ChromeSingleton::notify(kArgv, chrome.socketPath(), timeout) ? 0 : 1; });
        ASSERT_TRUE(chrome.waitForMessages(before + 1));
        for (int i = 0; i < 10; ++i) {
            ::kill(child.pid(), SIGSTOP);
            std::this_thread::sleep_for(milliseconds(5));
            ::kill(child.pid(), SIGCONT);
            std::this_thread::sleep_for(milliseconds(5));
        }
        EXPECT_EQ(child.wait(), 0) << timeout;
    }
}

volatile std::sig_atomic_t pipeSignals = 0;

TEST_F(SingletonSignals, APeerThatIsGoneRaisesNone) {
    chrome.behave(FakeChrome::closesAtOnce());
    struct sigaction count{};
    struct sigaction before{};
    count.sa_handler = [](int) { pipeSignals = pipeSignals + 1; };
    ASSERT_EQ(::sigaction(SIGPIPE, &count, &before), 0);
    for (int i = 0; i < 200; ++i) {
        EXPECT_FALSE(ChromeSingleton::notify(kArgv, chrome.socketPath(), 5));
    }
    EXPECT_EQ(pipeSignals, 0);
    ::sigaction(SIGPIPE, &before, nullptr);
}

}  // namespace
}  // namespace ferrivane
