// The direct road: a running Chrome's socket.
#include <gmock/gmock.h>

#include "core/ChromeSingletonMessage.h"
#include "tests/app/LauncherTest.h"
#include "tests/support/FakeChrome.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kHandedOver = "handed to running Chrome (pid 42) over its singleton socket";
constexpr const char* kExecutable = "/opt/chrome/chrome";

class LauncherSocket : public test::LauncherTest {
  protected:
    LauncherSocket() { fake.browser.process = kChrome; }

    // Links with which the whole message has this size.
    static std::string linkForMessageOf(std::size_t size) {
        const std::string start = "https://work.example/";
        const std::string folder = std::filesystem::current_path();
        const std::size_t rest =
            ChromeSingletonMessage::encode(folder, {kExecutable, start}).size();
        return start + std::string(size - rest, 'x');
    }
};

TEST_F(LauncherSocket, TakesTheRoadStepByStep) {
    const test::FakeChrome chrome(dir.path());
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)), kHandedOver);
    EXPECT_THAT(
        fake.calls.timedTexts(),
        ElementsAre("0 ms: applications.location com.google.Chrome", "0 ms: launchLock.tryAcquire",
                    "0 ms: browser.running",
                    "0 ms: applications.executable /apps/google-chrome.desktop",
                    "0 ms: launchLock.release", "0 ms: frontmost.open /apps/google-chrome.desktop",
                    "400 ms: frontmost.current"));
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherSocket, ReportsWhileItsCallerWaits) {
    const test::FakeChrome chrome(dir.path());
    open(test::linkAlone(kLink));
    EXPECT_THAT(outcomes, ElementsAre(kHandedOver));
}

TEST_F(LauncherSocket, MessageIsTheExecutableTheSwitchesAndTheLink) {
    const struct {
        const char* name;
        ChromeLauncher::Request request;
        std::vector<std::string> argv;
    } rows[] = {
        {"no profile", {.url = kLink}, {kExecutable, kLink}},
        {"a profile",
         {.url = kLink, .profileDirectory = "Default"},
         {kExecutable, "--profile-directory=Default", kLink}},
        {"a blank in the profile's directory",
         {.url = kLink, .profileDirectory = "Profile 2"},
         {kExecutable, "--profile-directory=Profile 2", kLink}},
        {"a token between profile and link",
         {.url = kLink, .profileDirectory = "Profile 2", .activationToken = "tok en"},
         {kExecutable, "--profile-directory=Profile 2", "--xdg-activation-token=tok en", kLink}},
        {"a token without a profile",
         {.url = kLink, .activationToken = "tok"},
         {kExecutable, "--xdg-activation-token=tok", kLink}},
        {"line breaks", {.url = "https://a/\r\nb"}, {kExecutable, "https://a/\r\nb"}},
        {"invalid UTF-8", {.url = "https://a/\xFF\xC3"}, {kExecutable, "https://a/\xFF\xC3"}},
        {"bidirectional controls",
         {.url = "https://a/\u202E\u2066"},
         {kExecutable, "https://a/\u202E\u2066"}},
        {"nothing", {.url = ""}, {kExecutable, ""}},
    };
    const test::FakeChrome chrome(dir.path());
    std::size_t count = 0;
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(row.request), kHandedOver) << row.name;
        ASSERT_TRUE(chrome.waitForMessages(++count)) << row.name;
        const auto message = chrome.messages().back();
        EXPECT_TRUE(message.wellFormed) << row.name;
        EXPECT_EQ(message.argv, row.argv) << row.name;
        EXPECT_EQ(message.currentDirectory, std::filesystem::current_path()) << row.name;
    }
}

TEST_F(LauncherSocket, LongestMessageThatChromeTakesArrivesWhole) {
    const test::FakeChrome chrome(dir.path());
    const std::string link = linkForMessageOf(32768);
    EXPECT_EQ(outcomeOf(test::linkAlone(link)), kHandedOver);
    ASSERT_TRUE(chrome.waitForMessages(1));
    EXPECT_THAT(chrome.messages().back().argv, ElementsAre(kExecutable, link));
}

TEST_F(LauncherSocket, LongerMessageIsLeftToTheRelayUncut) {
    const test::FakeChrome chrome(dir.path());
    for (const std::size_t size : {32769U, 131071U, 1U << 20}) {
        const std::string link = linkForMessageOf(size);
        EXPECT_EQ(outcomeOf(test::linkAlone(link)),
                  "handed to running Chrome (pid 42); helper exited 0");
        EXPECT_THAT(
            newLogLines(),
            ElementsAre("[WARN] singleton socket not used (message of " + std::to_string(size) +
                        " bytes exceeds Chrome's limit); starting Chrome's binary instead"));
        EXPECT_EQ(fake.browser.given->switches.back(), link);
    }
    EXPECT_THAT(chrome.messages(), IsEmpty());
}

TEST_F(LauncherSocket, EachWayItCanFailIsNamedAndTheRelayFollows) {
    using test::FakeChrome;
    const struct {
        const char* name;
        std::function<void(FakeChrome&)> arrange;
        std::string reason;
    } rows[] = {
        {"no link to a socket",
         [](FakeChrome& it) {
             std::filesystem::remove(it.userDataDirectory() / "SingletonSocket");
         },
         "no singleton socket in Chrome's user data directory"},
        {"cookies that differ", [](FakeChrome& it) { it.setSocketCookie("other"); },
         "singleton cookie does not match"},
        {"no cookie in the user data directory",
         [](FakeChrome& it) { it.setUserDataCookie(std::nullopt); },
         "singleton cookie does not match"},
        {"nobody listens", [](FakeChrome& it) { it.crash(); },
         "connect failed: Connection refused"},
        {"Chrome is about to end",
         [](FakeChrome& it) { it.behave(FakeChrome::answers("SHUTDOWN")); },
         "Chrome answered shutdown"},
        {"an answer that nobody knows",
         [](FakeChrome& it) { it.behave(FakeChrome::answers("NO\n")); },
         "Chrome answered unexpected(\"NO\")"},
        {"an end without an answer",
         [](FakeChrome& it) { it.behave(FakeChrome::closesAfterReading()); },
         "Chrome did not answer"},
    };
    for (const auto& row : rows) {
        const test::TempDir folder;
        FakeChrome chrome(folder.path());
        useUserData(chrome.userDataDirectory());
        row.arrange(chrome);
        fake.calls.clear();
        EXPECT_EQ(outcomeOf({.url = kLink, .profileDirectory = "Profile 2"}),
                  "handed to running Chrome (pid 42); helper exited 0")
            << row.name;
        EXPECT_THAT(newLogLines(), ElementsAre("[WARN] singleton socket not used (" + row.reason +
                                               "); starting Chrome's binary instead"))
            << row.name;
        EXPECT_THAT(fake.calls.of({"browser.startRelay"}),
                    ElementsAre("browser.startRelay /opt/chrome/chrome "
                                "[--profile-directory=Profile 2] [https://work.example/a]"))
            << row.name;
    }
}

TEST_F(LauncherSocket, PathBeyondTheSystemsLimitIsNamedInFull) {
    const test::FakeChrome chrome(dir.path(), {.socketPathLength = 104});
    outcomeOf(test::linkAlone(kLink));
    EXPECT_THAT(newLogLines(),
                ElementsAre("[WARN] singleton socket not used (socket path too long: " +
                            chrome.socketPath() + "); starting Chrome's binary instead"));
    EXPECT_THAT(chrome.messages(), IsEmpty());
}

TEST_F(LauncherSocket, LongestPathIsUsed) {
    const test::FakeChrome chrome(dir.path(), {.socketPathLength = 103});
    EXPECT_EQ(outcomeOf(test::linkAlone(kLink)), kHandedOver);
    EXPECT_THAT(chrome.messages(), SizeIs(1));
}

TEST_F(LauncherSocket, TokenOfALinkThatGoesToTheRelayIsNoSwitch) {
    test::FakeChrome chrome(dir.path());
    chrome.behave(test::FakeChrome::answers("SHUTDOWN"));
    outcomeOf({.url = kLink, .profileDirectory = "Default", .activationToken = "tok"});
    EXPECT_THAT(fake.browser.given->switches, ElementsAre("--profile-directory=Default", kLink));
    EXPECT_EQ(fake.browser.given->activationToken, "tok");
}

}  // namespace
}  // namespace ferrivane
