#include <filesystem>
#include <future>
#include <limits>

#include <gtest/gtest.h>
#include <signal.h>

#include "core/ChromeSingleton.h"
#include "tests/support/Child.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::FakeChrome;
using test::outcomeOf;
using Kind = ChromeSingleton::SingletonError::Kind;
using std::chrono::milliseconds;

constexpr double kLong = 60;
const std::vector<std::string> kArgv{"/opt/chrome", "--profile-directory=P", "https://a.b/"};

class SingletonNotify : public ::testing::Test {
  protected:
    std::string notify(double timeout = kLong) const {
        return outcomeOf(ChromeSingleton::notify(kArgv, chrome.socketPath(), timeout));
    }
    // argv whose message has this many bytes.
    static std::vector<std::string> argvOf(std::size_t messageLength) {
        const std::string directory = std::filesystem::current_path().string();
        const std::size_t before = std::string("START").size() + 1 + directory.size() + 1;
        return {std::string(messageLength - before, 'x')};
    }

    const test::TempDir dir;
    FakeChrome chrome{dir.path()};
};

TEST_F(SingletonNotify, SendsTheMessageAndReturnsOnAck) {
    EXPECT_EQ(ChromeSingleton::socketPath(chrome.userDataDirectory()), chrome.socketPath());
    EXPECT_EQ(notify(), "ok");
    const auto messages = chrome.messages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_TRUE(messages[0].wellFormed);
    EXPECT_EQ(messages[0].argv, kArgv);
    EXPECT_EQ(messages[0].currentDirectory, std::filesystem::current_path());
    EXPECT_EQ(messages[0].bytes,
              ChromeSingletonMessage::encode(messages[0].currentDirectory, kArgv));
}

TEST_F(SingletonNotify, SendsTheWorkingDirectoryAsItIs) {
    std::filesystem::create_directory(dir / "für  😀");
    EXPECT_EQ(test::inChild([&] {
                  std::filesystem::current_path(dir / "für  😀");
                  return notify();
              }),
              "ok");
    EXPECT_EQ(chrome.messages().at(0).currentDirectory, dir / "für  😀");
    EXPECT_EQ(test::inChild([&] {
                  std::filesystem::create_directory(dir / "gone");
                  std::filesystem::current_path(dir / "gone");
                  std::filesystem::remove(dir / "gone");
                  return notify();
              }),
              "ok");
    EXPECT_EQ(chrome.messages().at(1).currentDirectory, "");
}

TEST_F(SingletonNotify, LinksGoOutByteForByte) {
    for (const std::string& link : {
             std::string("https://a.b/\n\t\r"),
             std::string("\xFF\xC0\x80"),
             std::string(),
             std::string("https://a.b/\u202Emoc.live\u200B"),
             std::string("--x"),
             std::string(10'000, '\x01'),
         }) {
        const std::size_t before = chrome.messages().size();
        EXPECT_EQ(outcomeOf(ChromeSingleton::notify({"/c", link}, chrome.socketPath(), kLong)),
                  "ok");
        EXPECT_EQ(chrome.messages().at(before).argv, (std::vector<std::string>{"/c", link}));
    }
}

TEST_F(SingletonNotify, TheAnswerDecides) {
    const struct {
        const char* name;
        std::vector<std::string> answer;
        const char* outcome;
    } rows[] = {
        {"ACK", {"ACK"}, "ok"},
        {"ACK and a line break", {"ACK\r\n"}, "ok"},
        {"blank and ACK", {" ACK"}, "ok"},
        {"lower case", {"ack"}, R"(Chrome answered unexpected("ack"))"},
        {"SHUTDOWN", {"SHUTDOWN"}, "Chrome answered shutdown"},
        {"only the first of two packets counts", {"A", "CK"}, R"(Chrome answered unexpected("A"))"},
        {"what follows an ACK is not read", {"ACK", "SHUTDOWN"}, "ok"},
        {"16 bytes that cut a character",
         {"0123456789abcde\xC3"},
         "Chrome answered unexpected(\"0123456789abcde\uFFFD\")"},
        {"the 17th byte is not read", {"ACK             X"}, "ok"},
        {"nothing", {}, "Chrome did not answer"},
    };
    for (const auto& row : rows) {
        chrome.behave({.answer = row.answer});
        EXPECT_EQ(notify(), row.outcome) << row.name;
    }
}

TEST_F(SingletonNotify, AChromeThatReadsOnceGetsTheLongestMessageWhole) {
    constexpr int kMessages = 300;
    chrome.behave({.reading = FakeChrome::Reading::once});
    const auto argv = argvOf(ChromeSingletonMessage::maximumLength);
    for (int i = 0; i < kMessages; ++i) {
        ASSERT_EQ(outcomeOf(ChromeSingleton::notify(argv, chrome.socketPath(), kLong)), "ok");
    }
    const auto messages = chrome.messages();
    ASSERT_EQ(messages.size(), 300U);
    for (const auto& message : messages) ASSERT_EQ(message.bytes.size(), 32768U);
}

TEST_F(SingletonNotify, OneByteMoreIsRefusedBeforeThePathIsLookedAt) {
    for (const std::size_t length : {32769U, 131'071U, 1'000'000U}) {
        for (const std::string& path :
             {chrome.socketPath(), std::string(200, '/'), std::string("/nowhere")}) {
            const auto result = ChromeSingleton::notify(argvOf(length), path, kLong);
            ASSERT_FALSE(result);
            EXPECT_EQ(result.error().kind, Kind::messageTooLong);
            EXPECT_EQ(result.error().length, length);
            EXPECT_EQ(result.error().description(),
                      "message of " + std::to_string(length) + " bytes exceeds Chrome's limit");
        }
    }
    EXPECT_EQ(chrome.connections(), 0U);
}

TEST_F(SingletonNotify, AChromeThatClosesEarlyDidNotAnswer) {
    chrome.behave(FakeChrome::closesAfterReading());
    EXPECT_EQ(notify(), "Chrome did not answer");
    chrome.behave(FakeChrome::resets());
    EXPECT_EQ(notify(), "Chrome did not answer");
    chrome.behave(FakeChrome::closesWhileReading());
    EXPECT_EQ(notify(), "Chrome did not answer");
    // It may be gone before or after the message was written; this process lives on in any case.
    chrome.behave(FakeChrome::closesAtOnce());
    const auto argv = argvOf(ChromeSingletonMessage::maximumLength);
    for (int i = 0; i < 200; ++i) {
        const auto result = ChromeSingleton::notify(argv, chrome.socketPath(), kLong);
        ASSERT_FALSE(result);
        const std::string outcome = outcomeOf(result);
        EXPECT_TRUE(outcome == "Chrome did not answer" || outcome == "write failed: Broken pipe" ||
                    outcome == "write failed: Connection reset by peer")
            << outcome;
    }
}

TEST_F(SingletonNotify, AfterTheTimeoutChromeDidNotAnswer) {
    for (const auto& behaviour : {FakeChrome::neverReads(), FakeChrome::neverAnswers()}) {
        chrome.behave(behaviour);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(notify(1.0), "Chrome did not answer");
        EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(900));
    }
}

TEST_F(SingletonNotify, LessThanASecondIsNoLimit) {
    std::vector<std::future<std::string>> calls;
    std::vector<std::unique_ptr<test::TempDir>> folders;
    std::vector<std::unique_ptr<FakeChrome>> chromes;
    for (const double timeout : {0.5, 0.0, 0.999, -0.5, -3.0}) {
        folders.push_back(std::make_unique<test::TempDir>());
        chromes.push_back(std::make_unique<FakeChrome>(folders.back()->path()));
        chromes.back()->behave({.beforeAnswer = milliseconds(1200)});
        calls.push_back(std::async(std::launch::async, [&, timeout, fake = chromes.back().get()] {
            return outcomeOf(ChromeSingleton::notify(kArgv, fake->socketPath(), timeout));
        }));
    }
    for (auto& call : calls) EXPECT_EQ(call.get(), "ok");
}

TEST_F(SingletonNotify, TheLongestTimeoutIsOne) {
    EXPECT_EQ(notify(9.2e18), "ok");
    EXPECT_EQ(notify(-9223372036854775808.0), "ok") << "the smallest, which is no limit";
}

TEST_F(SingletonNotify, ATimeoutThatIsNoTimeStopsTheProcess) {
    for (const double timeout :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity(), 9223372036854775808.0, -9.3e18}) {
        EXPECT_EQ(test::inChild([&] { return notify(timeout); }),
                  "ended by signal " + std::to_string(SIGABRT))
            << timeout;
    }
}

}  // namespace
}  // namespace ferrivane
