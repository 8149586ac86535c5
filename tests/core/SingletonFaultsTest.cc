// Each step of the exchange refused by the system, and a socket that changes hands in between.
#include <array>
#include <fstream>
#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/ChromeSingleton.h"
#include "tests/support/Child.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/RefusedCalls.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using std::chrono::milliseconds;
using test::Call;
using test::FakeChrome;
using test::outcomeOf;

const std::vector<std::string> kArgv{"/opt/chrome", "https://a.b/"};

std::string notify(const FakeChrome& chrome, double timeout = 60) {
    return outcomeOf(ChromeSingleton::notify(kArgv, chrome.socketPath(), timeout));
}

TEST(SingletonFaults, EachRefusedCallHasItsError) {
    const struct {
        const char* name;
        Call call;
        int code;
        const char* outcome;
    } rows[] = {
        {"no descriptor left", Call::socket, EMFILE, "connect failed: Too many open files"},
        {"options are not important", Call::setOption, EINVAL, "ok"},
        {"connecting", Call::connect, EACCES, "connect failed: Permission denied"},
        {"connecting takes too long", Call::connect, EAGAIN,
         "connect failed: Resource temporarily unavailable"},
        {"writing", Call::send, EPIPE, "write failed: Broken pipe"},
        {"writing takes too long", Call::send, EAGAIN,
         "write failed: Resource temporarily unavailable"},
        {"closing one direction is not important", Call::shutdown, ENOTCONN, "ok"},
        {"reading", Call::read, ECONNRESET, "Chrome did not answer"},
        {"whoever listens is somebody else", Call::userId, ENOSYS,
         "singleton cookie does not match"},
    };
    for (const auto& row : rows) {
        const test::TempDir dir;
        FakeChrome chrome(dir.path());
        // Where nothing closes the direction, the message ends with the first read.
        if (row.call == Call::shutdown) chrome.behave({.reading = FakeChrome::Reading::once});
        EXPECT_EQ(test::inChild([&] {
                      test::refuse(row.call, row.code);
                      return notify(chrome);
                  }),
                  row.outcome)
            << row.name;
    }
}

TEST(SingletonFaults, AnInterruptedCallIsGivenUpOnlyAfterTheTimeout) {
    for (const Call call : {Call::connect, Call::send, Call::read}) {
        const test::TempDir dir;
        const FakeChrome chrome(dir.path());
        const auto start = std::chrono::steady_clock::now();
        const std::string outcome = test::inChild([&] {
            test::refuse(call, EINTR);
            return notify(chrome, 1);
        });
        EXPECT_EQ(outcome, call == Call::connect ? "connect failed: Interrupted system call"
                           : call == Call::send  ? "write failed: Interrupted system call"
                                                 : "Chrome did not answer");
        EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(900));
    }
}

TEST(SingletonFaults, WithoutATimeoutItIsNeverGivenUp) {
    const test::TempDir dir;
    const FakeChrome chrome(dir.path());
    const test::Child child([&] {
        test::refuse(Call::read, EINTR);
        (void)notify(chrome, 0);
        return 0;
    });
    ASSERT_TRUE(chrome.waitForMessages(1));
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_EQ(::waitpid(child.pid(), nullptr, WNOHANG), 0) << "still trying";
}

TEST(SingletonFaults, AListenerOfAnotherUserIsNotTrusted) {
    if (::geteuid() != 0) return;  // the table above has the case without another user
    const test::TempDir dir;
    const FakeChrome chrome(dir.path());
    for (const auto& folder : {dir.path(), chrome.socketDirectory()}) {
        test::setMode(folder, 0755);
    }
    test::setMode(chrome.socketPath(), 0777);
    EXPECT_EQ(test::inChild([&] {
                  test::becomeUnprivileged();
                  return notify(chrome);
              }),
              "singleton cookie does not match");
    EXPECT_TRUE(chrome.messages().empty());
}

TEST(SingletonFaults, AFullQueueIsAFailureToConnect) {
    const test::TempDir dir;
    FakeChrome chrome(dir.path(), {.accepting = false});
    chrome.fillBacklog();
    EXPECT_EQ(notify(chrome, 1), "connect failed: Resource temporarily unavailable");
}

// Waits until the thread is inside connect(2), which a full queue holds up.
void waitUntilConnecting(pid_t thread) {
    const std::string file = "/proc/self/task/" + std::to_string(thread) + "/syscall";
    const std::string connecting = std::to_string(test::numberOf(Call::connect)) + " ";
    while (!test::readText(file).starts_with(connecting)) {
        std::this_thread::sleep_for(milliseconds(1));
    }
}

TEST(SingletonFaults, ACookieThatChangesBeforeTheConnectionStandsIsAMismatch) {
    const struct {
        const char* name;
        std::optional<std::string> before;
        std::optional<std::string> after;
        const char* outcome;
    } rows[] = {
        {"another text", "1", "2", "singleton cookie does not match"},
        {"gone", "1", std::nullopt, "singleton cookie does not match"},
        {"newly there", std::nullopt, "1", "singleton cookie does not match"},
        {"the same text again", "1", "1", "ok"},
        {"still missing", std::nullopt, std::nullopt, "ok"},
    };
    for (const auto& row : rows) {
        const test::TempDir dir;
        FakeChrome chrome(dir.path(), {.accepting = false});
        chrome.setSocketCookie(row.before);
        chrome.fillBacklog();
        std::promise<pid_t> thread;
        auto outcome = std::async(std::launch::async, [&] {
            thread.set_value(::gettid());
            return notify(chrome);
        });
        waitUntilConnecting(thread.get_future().get());
        chrome.setSocketCookie(row.after);
        chrome.startAccepting();
        EXPECT_EQ(outcome.get(), row.outcome) << row.name;
        EXPECT_EQ(chrome.messages().empty(), row.outcome != std::string("ok")) << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
