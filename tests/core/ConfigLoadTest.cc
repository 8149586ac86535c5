#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/Config.h"
#include "core/support/FileDescriptor.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::outcomeOf;

class ConfigLoad : public ::testing::Test {
  protected:
    const test::TempDir dir;
    const std::filesystem::path file = dir / "rules.json";
};

TEST_F(ConfigLoad, ReadsTheWholeFile) {
    test::writeText(file, R"({"defaultProfile": "Work"})");
    EXPECT_EQ(Config::load(file)->defaultProfile, "Work");
}

TEST_F(ConfigLoad, FollowsASymbolicLink) {
    test::writeText(dir / "elsewhere", R"({"defaultProfile": "Work"})");
    std::filesystem::create_symlink("elsewhere", file);
    EXPECT_EQ(Config::load(file)->defaultProfile, "Work");
}

TEST_F(ConfigLoad, WhatCannotBeReadIsNamedAsTheSystemNamesIt) {
    std::filesystem::create_directory(dir / "folder");
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", dir / "loop");
    std::filesystem::create_symlink("nowhere", dir / "dangling");
    test::writeText(file, "");
    const struct {
        const char* name;
        std::filesystem::path path;
        const char* description;
    } rows[] = {
        {"missing", dir / "none.json", "open failed: No such file or directory"},
        {"missing folder", dir / "none/rules.json", "open failed: No such file or directory"},
        {"below a file", file / "rules.json", "open failed: Not a directory"},
        {"dangling link", dir / "dangling", "open failed: No such file or directory"},
        {"link to itself", dir / "loop", "open failed: Too many levels of symbolic links"},
        {"folder", dir / "folder", "read failed: Is a directory"},
        {"pipe without a writer", dir / "pipe", "read failed: Invalid argument"},
        {"device", "/dev/null", "read failed: Invalid argument"},
        {"name beyond the system's limit", dir / std::string(300, 'x'),
         "open failed: File name too long"},
        {"empty path", "", "open failed: No such file or directory"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(Config::load(row.path)), row.description) << row.name;
    }
}

TEST_F(ConfigLoad, APipeThatIsWrittenToIsNotRead) {
    const std::filesystem::path pipe = dir / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const FileDescriptor both(::open(pipe.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::write(both.get(), "{}", 2), 2);
    EXPECT_EQ(outcomeOf(Config::load(pipe)), "read failed: Invalid argument");
}

TEST_F(ConfigLoad, NoPermissionIsAnError) {
    test::writeText(file, "{}");
    test::setMode(file, 0);
    test::setMode(dir.path(), 0755);
    EXPECT_EQ(test::inChild([&] {
                  test::becomeUnprivileged();
                  return outcomeOf(Config::load(file));
              }),
              "open failed: Permission denied");
}

TEST_F(ConfigLoad, TenMegabytesAreNoTrouble) {
    constexpr std::size_t kSize = 10'000'000;
    constexpr std::size_t kRules = 20'000;
    Config config;
    for (std::size_t i = 0; i < kRules; ++i) {
        config.rules.emplace_back(Rule::Kind::host, std::to_string(i) + ".example", "Profile 1");
    }
    std::string text = *config.encode();
    text.insert(1, "\"x\": \"" + std::string(kSize - text.size(), 'x') + "\",");
    test::writeText(file, text);
    ASSERT_GE(std::filesystem::file_size(file), kSize);
    const auto loaded = Config::load(file);
    ASSERT_EQ(outcomeOf(loaded), "ok");
    ASSERT_EQ(loaded->rules.size(), kRules);
    EXPECT_EQ(loaded->rules.back().match, "19999.example");
}

TEST_F(ConfigLoad, AFileThatNoOneCouldHaveWrittenByHandIsNotEvenRead) {
    test::writeText(file, "{");
    std::filesystem::resize_file(file, std::uintmax_t{1} << 40);  // sparse
    EXPECT_EQ(outcomeOf(Config::load(file)), "read failed: File too large");
}

}  // namespace
}  // namespace ferrivane
