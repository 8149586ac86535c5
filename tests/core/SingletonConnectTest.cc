#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "core/ChromeSingleton.h"
#include "tests/support/Child.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using std::chrono::milliseconds;
using test::FakeChrome;
using test::outcomeOf;

constexpr double kLong = 60;
const std::vector<std::string> kArgv{"/opt/chrome", "--profile-directory=P", "https://a.b/"};

class SingletonConnect : public ::testing::Test {
  protected:
    std::string notify() const {
        return outcomeOf(ChromeSingleton::notify(kArgv, chrome.socketPath(), kLong));
    }

    const test::TempDir dir;
    FakeChrome chrome{dir.path()};
};

TEST_F(SingletonConnect, NobodyListening) {
    chrome.crash();
    EXPECT_EQ(ChromeSingleton::socketPath(chrome.userDataDirectory()), chrome.socketPath());
    EXPECT_EQ(notify(), "connect failed: Connection refused");
    std::filesystem::remove(chrome.socketPath());
    EXPECT_EQ(notify(), "connect failed: No such file or directory");
    test::writeText(chrome.socketPath(), "a file");
    EXPECT_EQ(notify(), "connect failed: Connection refused");
    chrome.quit();
    EXPECT_EQ(notify(), "connect failed: No such file or directory");
    EXPECT_EQ(outcomeOf(ChromeSingleton::socketPath(chrome.userDataDirectory())),
              "no singleton socket in Chrome's user data directory");
}

TEST_F(SingletonConnect, TheCookieMayBeMissingAsLongAsItStaysSo) {
    chrome.setSocketCookie(std::nullopt);
    EXPECT_EQ(notify(), "ok");
}

TEST(SingletonSocketLength, OneHundredAndThreeBytesAreAccepted) {
    const test::TempDir dir;
    const FakeChrome chrome(dir.path(), {.socketPathLength = 103});
    ASSERT_EQ(chrome.socketPath().size(), 103U);
    EXPECT_EQ(outcomeOf(ChromeSingleton::notify(kArgv, chrome.socketPath(), kLong)), "ok");
    EXPECT_EQ(outcomeOf(ChromeSingleton::listener(chrome.socketPath())), "ok");
}

TEST(SingletonSocketLength, OneByteMoreIsRefusedBeforeThereIsASocket) {
    for (const std::string& path :
         {"/" + std::string(103, 'x'), "/" + std::string(101, 'x') + "é", std::string(4000, '/')}) {
        const auto result = ChromeSingleton::notify(kArgv, path, kLong);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().description(), "socket path too long: " + path);
        EXPECT_EQ(outcomeOf(ChromeSingleton::listener(path)), "socket path too long: " + path);
    }
}

TEST_F(SingletonConnect, ListenerIsTheProcessThatListens) {
    EXPECT_EQ(ChromeSingleton::listener(chrome.socketPath()), ::getpid());
    const test::TempDir other;
    test::Child child([&] {
        const FakeChrome elsewhere(other.path());
        for (;;) ::pause();
        return 0;
    });
    const std::string path = (other / "s/SingletonSocket").string();
    auto listener = ChromeSingleton::listener(path);
    while (!listener) {
        std::this_thread::sleep_for(milliseconds(1));
        listener = ChromeSingleton::listener(path);
    }
    EXPECT_EQ(listener, child.pid());
    ::kill(child.pid(), SIGKILL);
    child.wait();
    EXPECT_EQ(outcomeOf(ChromeSingleton::listener(path)), "connect failed: Connection refused");
}

TEST_F(SingletonConnect, AskingWhoListensDoesNoHarm) {
    for (int i = 0; i < 50; ++i) EXPECT_TRUE(ChromeSingleton::listener(chrome.socketPath()));
    EXPECT_EQ(notify(), "ok");
    EXPECT_EQ(chrome.messages().size(), 1U);
}

TEST_F(SingletonConnect, AThousandCallsLeaveNoDescriptorOpen) {
    const std::vector<std::string> longArgv{std::string(40'000, 'x')};
    const std::string longPath(104, 'x');
    const test::TempDir other;
    FakeChrome probed(other.path());
    chrome.behave(std::vector{FakeChrome::answers("ACK"), FakeChrome::answers("SHUTDOWN"),
                              FakeChrome::closesAfterReading(), FakeChrome::answers("ACK")});
    const std::size_t before = test::openDescriptors();
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(ChromeSingleton::notify(kArgv, chrome.socketPath(), kLong).has_value(),
                  i != 1 && i != 2);
        EXPECT_FALSE(ChromeSingleton::notify(kArgv, "/nowhere/at/all", kLong));
        EXPECT_FALSE(ChromeSingleton::notify(kArgv, longPath, kLong));
        EXPECT_FALSE(ChromeSingleton::notify(longArgv, chrome.socketPath(), kLong));
        EXPECT_TRUE(ChromeSingleton::socketPath(chrome.userDataDirectory()));
        EXPECT_TRUE(ChromeSingleton::listener(probed.socketPath()));
    }
    // The last connection may still be open on the other side.
    chrome.crash();
    probed.crash();
    EXPECT_LT(test::openDescriptors(), before);
}

}  // namespace
}  // namespace ferrivane
