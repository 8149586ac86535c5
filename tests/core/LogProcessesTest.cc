// Several processes writing to one log file, as an agent and one-shot links do.
#include <array>
#include <filesystem>
#include <memory>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "core/Log.h"
#include "tests/core/LogLines.h"
#include "tests/support/Child.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

constexpr std::size_t kProcesses = 4;
constexpr std::size_t kThreads = 2;
// Together above the limit once, but not twice: if the file were moved aside more than once, the
// first part would be deleted and its lines be missing here.
constexpr int kLines = 2500;
constexpr std::size_t kFiller = 100;

// Runs in each process; none of its threads waits for another.
int writeLines(const std::filesystem::path& folder, std::size_t process) {
    Log log(folder);
    std::array<std::thread, kThreads> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread) {
        threads[thread] = std::thread([&log, process, thread] {
            for (int line = 0; line < kLines; ++line) {
                log.info(std::to_string(process * kThreads + thread) + " " + std::to_string(line) +
                         " " + std::string(kFiller, 'x') + " end");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    return log.flush(std::chrono::seconds(100)) ? 0 : 1;
}

TEST(LogProcesses, LoseNoLineWhileTheFileIsMovedAside) {
    const test::TempDir dir;
    const std::filesystem::path file = dir / "ferrivane.log";
    {
        std::array<std::unique_ptr<test::Child>, kProcesses> children;
        for (std::size_t process = 0; process < kProcesses; ++process) {
            children[process] =
                std::make_unique<test::Child>([&] { return writeLines(dir.path(), process); });
        }
        for (const auto& child : children) ASSERT_EQ(child->wait(), 0);
    }
    const std::filesystem::path older = dir / "ferrivane.log.1";
    ASSERT_TRUE(std::filesystem::exists(older)) << "the lines were too few for this test";
    const std::uintmax_t olderSize = std::filesystem::file_size(older);
    EXPECT_GT(olderSize, test::kLogRotatesAbove);
    EXPECT_LT(olderSize, test::kLogRotatesAbove + 500) << "it was moved aside at the first chance";

    std::vector<int> next(kProcesses * kThreads, 0);
    for (const std::filesystem::path& part : {older, file}) {
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
    EXPECT_EQ(next, std::vector<int>(kProcesses * kThreads, kLines));
}

}  // namespace
}  // namespace ferrivane
