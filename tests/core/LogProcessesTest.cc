// Several processes writing to one log file, as an agent and one-shot links do.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include "core/Log.h"
#include "core/support/FileDescriptor.h"
#include "tests/core/LogLines.h"
#include "tests/support/Child.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

constexpr std::size_t kProcesses = 10;
constexpr std::size_t kThreads = 2;
constexpr std::size_t kWriters = kProcesses * kThreads;
// The lines of one round are a little less than the limit. So the file is moved aside at most once
// in a round, and between two rounds what was moved aside can be kept.
constexpr int kLinesInRound = 250;
constexpr std::size_t kFiller = 350;

int rounds() {
    const char* const faults = std::getenv("FAULTS");  // NOLINT(concurrency-mt-unsafe)
    return faults != nullptr && faults == std::string_view("all") ? 50 : 8;
}

// In a process of its own; none of its threads waits for another. Writes one round for each byte
// that it gets, and answers with one.
int writeLines(const std::filesystem::path& folder, std::size_t process, int conductor) {
    Log log(folder);
    char byte = 0;
    for (int round = 0; ::read(conductor, &byte, 1) == 1; ++round) {
        std::array<std::thread, kThreads> threads;
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            threads[thread] = std::thread([&log, process, thread, round] {
                for (int line = 0; line < kLinesInRound; ++line) {
                    log.info(std::to_string(process * kThreads + thread) + " " +
                             std::to_string(round * kLinesInRound + line) + " " +
                             std::string(kFiller, 'x') + " end");
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        if (!log.flush(std::chrono::seconds(100)) || ::write(conductor, &byte, 1) != 1) return 1;
    }
    return 0;
}

class LogProcesses : public ::testing::Test {
  protected:
    // A process that has ended fails the test, and not all tests.
    void SetUp() override { formerHandler = ::signal(SIGPIPE, SIG_IGN); }
    void TearDown() override { ::signal(SIGPIPE, formerHandler); }

    void startProcesses() {
        for (std::size_t process = 0; process < kProcesses; ++process) {
            std::array<int, 2> ends{};
            ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
            conductors[process] = FileDescriptor(ends[0]);
            children[process] = std::make_unique<test::Child>([&] {
                for (FileDescriptor& conductor : conductors) conductor.reset();
                return writeLines(dir.path(), process, ends[1]);
            });
            ::close(ends[1]);
        }
    }

    void writeRound() {
        char byte = 0;
        for (const FileDescriptor& conductor : conductors) {
            ASSERT_EQ(::write(conductor.get(), &byte, 1), 1);
        }
        for (const FileDescriptor& conductor : conductors) {
            ASSERT_EQ(::read(conductor.get(), &byte, 1), 1);
        }
    }

    // Under a name of its own, which the next move leaves alone.
    void keepOlder() {
        if (!std::filesystem::exists(older)) return;
        if (!kept.empty() && std::filesystem::equivalent(older, kept.back())) return;
        kept.push_back(dir / ("kept." + std::to_string(kept.size())));
        std::filesystem::create_hard_link(older, kept.back());
    }

    void endProcesses() {
        for (FileDescriptor& conductor : conductors) conductor.reset();
        for (const auto& child : children) ASSERT_EQ(child->wait(), 0);
    }

    void (*formerHandler)(int) = SIG_DFL;
    const test::TempDir dir;
    const std::filesystem::path file = dir / "ferrivane.log";
    const std::filesystem::path older = dir / "ferrivane.log.1";
    std::vector<std::filesystem::path> kept;
    std::array<FileDescriptor, kProcesses> conductors;
    std::array<std::unique_ptr<test::Child>, kProcesses> children;
};

TEST_F(LogProcesses, LoseNoLineWhileTheFileIsMovedAside) {
    ASSERT_NO_FATAL_FAILURE(startProcesses());
    for (int round = 0; round < rounds(); ++round) {
        ASSERT_NO_FATAL_FAILURE(writeRound());
        keepOlder();
    }
    ASSERT_NO_FATAL_FAILURE(endProcesses());
    EXPECT_GE(static_cast<int>(kept.size()), rounds() * 3 / 4)
        << "the lines were too few for this test";

    std::vector<int> next(kWriters, 0);
    for (const std::filesystem::path& part : kept) {
        const std::uintmax_t size = std::filesystem::file_size(part);
        EXPECT_GT(size, test::kLogRotatesAbove);
        EXPECT_LT(size, test::kLogRotatesAbove + 500) << "it was moved aside at the first chance";
    }
    kept.push_back(file);
    for (const std::filesystem::path& part : kept) {
        for (const std::string& line : test::linesOf(part)) {
            std::istringstream words(test::withoutStamp(line));
            std::string level;
            std::size_t writer = next.size();
            int number = -1;
            std::string rest;
            words >> level >> writer >> number;
            std::getline(words, rest);
            ASSERT_EQ(level, "[INFO]") << line;
            ASSERT_LT(writer, next.size()) << line;
            ASSERT_EQ(number, next[writer]++) << line;
            ASSERT_EQ(rest, " " + std::string(kFiller, 'x') + " end");
        }
    }
    EXPECT_EQ(next, std::vector<int>(kWriters, rounds() * kLinesInRound));
}

}  // namespace
}  // namespace ferrivane
