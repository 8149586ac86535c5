// System calls that fail in the middle of a hand-over.
#include <cerrno>

#include <gmock/gmock.h>

#include "tests/app/LauncherTest.h"
#include "tests/support/Child.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/RefusedCalls.h"

namespace ferrivane {
namespace {

class LauncherFaults : public test::LauncherTest {
  protected:
    // The log's only line and the outcome after a hand-over in which `call` fails.
    std::string whenRefused(test::Call call, int code) {
        fake.browser.process = kChrome;
        return test::inChild([&] {
            test::refuse(call, code);
            const std::string outcome = outcomeOf(test::linkAlone(kLink));
            const auto lines = newLogLines();
            return (lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " lines") + "\n" +
                   outcome;
        });
    }

    // Nothing needs an answer, and a process that forks had better have no other thread.
    test::FakeChrome chrome{dir.path(), {.accepting = false}};
};

TEST_F(LauncherFaults, ConnectionThatBreaksWhileSendingIsLeftToTheRelay) {
    EXPECT_EQ(whenRefused(test::Call::send, EPIPE),
              "[WARN] singleton socket not used (write failed: Broken pipe); starting Chrome's "
              "binary instead\n"
              "handed to running Chrome (pid 42); helper exited 0");
}

TEST_F(LauncherFaults, SocketThatCannotBeMadeIsLeftToTheRelay) {
    EXPECT_EQ(whenRefused(test::Call::socket, EMFILE),
              "[WARN] singleton socket not used (connect failed: Too many open files); starting "
              "Chrome's binary instead\n"
              "handed to running Chrome (pid 42); helper exited 0");
}

}  // namespace
}  // namespace ferrivane
