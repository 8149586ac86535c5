#include <ctime>
#include <regex>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include "core/Log.h"
#include "core/port/Paths.h"
#include "core/support/FileDescriptor.h"
#include "tests/core/LogLines.h"
#include "tests/support/Child.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using std::chrono::system_clock;
using test::linesOf;
using test::withoutStamp;
constexpr std::chrono::seconds kLong{60};

// The time that a line's stamp names.
system_clock::time_point stampOf(const std::string& line) {
    tm local{};
    ::strptime(line.c_str(), "%Y-%m-%d %H:%M:%S", &local);
    local.tm_isdst = -1;
    const int milliseconds = std::stoi(line.substr(20, 3));
    return system_clock::from_time_t(std::mktime(&local)) + std::chrono::milliseconds(milliseconds);
}

TEST(LogLine, HasStampLevelAndMessage) {
    const test::TempDir dir;
    Log log(dir.path());
    EXPECT_EQ(log.fileURL, dir / "ferrivane.log");
    EXPECT_FALSE(log.echoToStderr);
    const auto before = system_clock::now();
    log.info("first");
    log.warn("second");
    log.error("third");
    log.info("");
    const auto after = system_clock::now();
    ASSERT_TRUE(log.flush(kLong));

    const std::regex form(
        R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3} \[(INFO|WARN|ERROR)\] (first|second|third|))");
    const auto lines = linesOf(log.fileURL);
    ASSERT_EQ(lines.size(), 4U);
    for (const std::string& line : lines) {
        EXPECT_TRUE(std::regex_match(line, form)) << line;
        EXPECT_GE(stampOf(line), std::chrono::floor<std::chrono::milliseconds>(before));
        EXPECT_LE(stampOf(line), after);
    }
    EXPECT_EQ(withoutStamp(lines[0]), "[INFO] first");
    EXPECT_EQ(withoutStamp(lines[1]), "[WARN] second");
    EXPECT_EQ(withoutStamp(lines[2]), "[ERROR] third");
    EXPECT_EQ(withoutStamp(lines[3]), "[INFO] ");
    EXPECT_EQ(test::readText(log.fileURL).back(), '\n');
}

TEST(LogLine, MessagesAreNotEscaped) {
    const test::TempDir dir;
    Log log(dir.path());
    const std::string message =
        std::string("a\n2026-01-01 00:00:00.000 [ERROR] forged\r\t\0\xFF\x1B", 43) + "\u202E…😀";
    log.info(message);
    log.info(std::string(1'000'000, 'x'));
    ASSERT_TRUE(log.flush(kLong));
    const std::string text = test::readText(log.fileURL);
    EXPECT_EQ(text.substr(test::kLogStampLength, message.size() + 9), " [INFO] " + message + "\n");
    EXPECT_TRUE(text.ends_with(" [INFO] " + std::string(1'000'000, 'x') + "\n"));
}

TEST(LogLine, EachGoesToStandardErrorTooWhenAsked) {
    const test::TempDir dir;
    Log log(dir.path());
    log.echoToStderr = true;
    ::testing::internal::CaptureStderr();
    log.info("one");
    log.error("two");
    const bool complete = log.flush(kLong);
    const std::string echoed = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(complete);
    EXPECT_EQ(echoed, test::readText(log.fileURL));
    EXPECT_EQ(linesOf(log.fileURL).size(), 2U);
}

TEST(LogLine, LinesOfOneThreadStayInOrder) {
    const test::TempDir dir;
    Log log(dir.path());
    for (int i = 0; i < 1000; ++i) log.info(std::to_string(i));
    ASSERT_TRUE(log.flush(kLong));
    const auto lines = linesOf(log.fileURL);
    ASSERT_EQ(lines.size(), 1000U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(withoutStamp(lines[i]), "[INFO] " + std::to_string(i));
        EXPECT_LE(stampOf(lines[i == 0 ? 0 : i - 1]), stampOf(lines[i]));
    }
}

TEST(LogLine, LinesOfSeveralThreadsAreWhole) {
    constexpr int kThreads = 8;
    constexpr int kLines = 300;
    const test::TempDir dir;
    Log log(dir.path());
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&log, thread] {
            const std::string name(50, static_cast<char>('a' + thread));
            for (int i = 0; i < kLines; ++i) log.info(name + " " + std::to_string(i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_TRUE(log.flush(kLong));
    std::vector<int> next(kThreads, 0);
    for (const std::string& line : linesOf(log.fileURL)) {
        const auto thread = static_cast<std::size_t>(line[test::kLogStampLength + 8] - 'a');
        ASSERT_LT(thread, next.size()) << line;
        const std::string name(50, static_cast<char>('a' + thread));
        EXPECT_EQ(withoutStamp(line), "[INFO] " + name + " " + std::to_string(next[thread]++));
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLines));
}

TEST(LogLine, TheStampIsTheTimeOfTheCallNotOfTheWriting) {
    const test::TempDir dir;
    Log log(dir.path());
    const FileDescriptor folder(::open(dir.path().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(folder.get(), LOCK_EX), 0);
    log.info("held up");
    const auto called = system_clock::now();
    EXPECT_FALSE(log.flush(std::chrono::milliseconds(30))) << "the folder is locked";
    const auto released = system_clock::now();
    ASSERT_EQ(::flock(folder.get(), LOCK_UN), 0);
    ASSERT_TRUE(log.flush(kLong));
    const auto stamp = stampOf(linesOf(log.fileURL).at(0));
    EXPECT_LE(stamp, called);
    EXPECT_LT(stamp, released);
}

TEST(LogLine, FlushWithoutALineReturnsAtOnce) {
    const test::TempDir dir;
    Log log(dir.path());
    EXPECT_TRUE(log.flush(std::chrono::milliseconds(0)));
    EXPECT_FALSE(std::filesystem::exists(log.fileURL)) << "the first line makes the file";
}

TEST(LogShared, IsOneObjectInTheLogDirectory) {
    const test::TempDir dir;
    EXPECT_EQ(test::inChild([&] {
                  test::setVariable("HOME", dir.path().c_str());
                  test::setVariable("XDG_STATE_HOME", nullptr);
                  Log& log = Log::shared();
                  if (&log != &Log::shared()) return std::string("two objects");
                  if (log.fileURL != Paths::logDirectory() / "ferrivane.log") {
                      return log.fileURL.string();
                  }
                  log.info("hello");
                  if (!log.flush(kLong)) return std::string("not written");
                  return withoutStamp(linesOf(log.fileURL).at(0));
              }),
              "[INFO] hello");
}

}  // namespace
}  // namespace ferrivane
