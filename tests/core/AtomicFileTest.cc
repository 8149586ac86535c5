#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/support/AtomicFile.h"
#include "core/support/ReadFile.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::namesIn;
using test::outcomeOf;
using test::readText;
using test::writeText;
using Names = std::vector<std::string>;

std::string temporaryName(pid_t pid, unsigned number) {
    return ".rules.json." + std::to_string(pid) + "-" + std::to_string(number) + ".tmp";
}

pid_t deadProcess() {
    const test::Child child([] { return 0; });
    return child.pid();  // ended by the destructor before anybody uses it
}

class AtomicFileWrite : public ::testing::Test {
  protected:
    const test::TempDir dir;
    const std::filesystem::path file = dir / "rules.json";
};

TEST_F(AtomicFileWrite, WritesEveryByte) {
    for (const std::size_t size : {0U, 1U, 4096U, 1'000'000U}) {
        const std::string bytes(size, '\xFF');
        EXPECT_EQ(outcomeOf(AtomicFile::write(file, bytes)), "ok");
        EXPECT_EQ(readText(file), bytes);
    }
}

TEST_F(AtomicFileWrite, RemovesWhatADeadWriterLeft) {
    const pid_t dead = deadProcess();
    writeText(dir / temporaryName(dead, 1), "half");
    writeText(dir / temporaryName(dead, 99), "half");
    EXPECT_EQ(outcomeOf(AtomicFile::write(file, "x")), "ok");
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(AtomicFileWrite, KeepsWhatIsNotALeftover) {
    const pid_t dead = deadProcess();
    const std::string pid = std::to_string(dead);
    const std::string own = std::to_string(::getpid());
    Names names{
        temporaryName(::getppid(), 1),    // its writer lives
        ".other.json." + pid + "-1.tmp",  // of another file
        "rules.json." + pid + "-1.tmp",
        ".rules.json." + pid + "-1.tmp~",
        ".rules.json." + pid + ".tmp",
        ".rules.json.-" + pid + "-1.tmp",
        ".rules.json.tmp",
        ".rules.json..tmp",
        ".rules.json.x" + pid + "-1.tmp",
        ".rules.json.99999999999-1.tmp",
        ".rules.json.0-1.tmp",
        // Of this process, but no name that it gives.
        ".rules.json." + own + "-.tmp",
        ".rules.json." + own + "-x.tmp",
        ".rules.json." + own + "-4000000000x.tmp",
        ".rules.json." + own + "-99999999999.tmp",
    };
    for (const std::string& name : names) writeText(dir / name, "mine");
    EXPECT_EQ(outcomeOf(AtomicFile::write(file, "x")), "ok");
    names.emplace_back("rules.json");
    std::ranges::sort(names);
    EXPECT_EQ(namesIn(dir.path()), names);
}

// In a container a program has the same pid each time it runs.
TEST_F(AtomicFileWrite, RemovesWhatAnEarlierProcessWithOurPidLeft) {
    constexpr unsigned kNeverUsedByUs = 4'000'000'000;
    writeText(dir / temporaryName(::getpid(), kNeverUsedByUs), "half");
    EXPECT_EQ(outcomeOf(AtomicFile::write(file, "x")), "ok");
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

// Somebody who guesses the next names gains nothing: what lies there is never opened.
TEST_F(AtomicFileWrite, WhatIsPlantedUnderATemporaryNameIsNotWrittenTo) {
    writeText(dir / "precious", "kept");
    writeText(file, "old");
    constexpr unsigned kMoreThanWereUsed = 200;
    const auto plant = [&](const auto& lay) {
        for (unsigned number = 1; number < kMoreThanWereUsed; ++number) {
            lay(dir / temporaryName(::getpid(), number));
        }
    };
    plant([](const auto& name) { std::filesystem::create_symlink("precious", name); });
    EXPECT_EQ(outcomeOf(AtomicFile::write(file, "new")), "ok");
    EXPECT_EQ(readText(dir / "precious"), "kept");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(file)));

    plant([](const auto& name) {
        std::filesystem::remove(name);
        ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    });
    EXPECT_EQ(outcomeOf(AtomicFile::write(file, "newer")), "ok");
    EXPECT_EQ(readText(file), "newer");

    plant([](const auto& name) {
        std::filesystem::remove(name);
        std::filesystem::create_directory(name);
    });
    EXPECT_EQ(outcomeOf(AtomicFile::write(file, "newest")), "open failed: File exists");
    EXPECT_EQ(readText(file), "newer");
}

TEST_F(AtomicFileWrite, ABareFileNameMeansTheWorkingDirectory) {
    const std::string leftover = temporaryName(deadProcess(), 1);
    writeText(dir / leftover, "half");
    EXPECT_EQ(test::inChild([&] {
                  std::filesystem::current_path(dir.path());
                  return outcomeOf(AtomicFile::write("rules.json", "x"));
              }),
              "ok");
    EXPECT_EQ(readText(file), "x");
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(AtomicFileWrite, AFullDiskKeepsTheOldFile) {
    writeText(file, "old");
    EXPECT_EQ(test::inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{100'000, 100'000};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  // The first write of two is short.
                  return outcomeOf(AtomicFile::write(file, std::string(150'000, 'x')));
              }),
              "write failed: File too large");
    EXPECT_EQ(readText(file), "old");
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(AtomicFileWrite, TwoWritersAndAReaderNeverSeeAMixture) {
    constexpr int kWrites = 300;
    const std::string first(50'000, 'a');
    const std::string second(30'000, 'b');
    ASSERT_EQ(outcomeOf(AtomicFile::write(file, first)), "ok");
    std::atomic<int> running = 2;
    std::atomic<int> failures = 0;
    const auto writer = [&](const std::string& text) {
        for (int i = 0; i < kWrites; ++i) {
            if (!AtomicFile::write(file, text)) ++failures;
        }
        --running;
    };
    std::thread one(writer, first);
    std::thread other(writer, second);
    int mixtures = 0;
    while (running > 0) {
        const auto text = readFile(file);
        if (!text || (*text != first && *text != second)) ++mixtures;
    }
    one.join();
    other.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(mixtures, 0);
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(AtomicFileWrite, LeavesNoDescriptorOpen) {
    std::filesystem::create_directory(dir / "folder");
    const std::size_t before = test::openDescriptors();
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(AtomicFile::write(file, "x"));
        EXPECT_FALSE(AtomicFile::write(dir / "folder", "x"));
        EXPECT_FALSE(AtomicFile::write(file / "x", "x"));
    }
    EXPECT_EQ(test::openDescriptors(), before);
}

TEST(AtomicFileFolders, AreMadeForTheUserAloneHoweverDeep) {
    const test::TempDir dir;
    const mode_t before = ::umask(0);
    EXPECT_EQ(outcomeOf(AtomicFile::createFolders(dir / "a/b/c/")), "ok");
    ::umask(before);
    for (const char* folder : {"a", "a/b", "a/b/c"}) EXPECT_EQ(test::modeOf(dir / folder), 0700U);
    std::filesystem::create_directory_symlink("a", dir / "link");
    for (const char* folder : {"a/b/c", "link", "link/b/d", "a/../e"}) {
        EXPECT_EQ(outcomeOf(AtomicFile::createFolders(dir / folder)), "ok") << folder;
    }
    EXPECT_EQ(outcomeOf(AtomicFile::createFolders("/")), "ok");
    EXPECT_EQ(outcomeOf(AtomicFile::createFolders("")), "ok");
}

}  // namespace
}  // namespace ferrivane
