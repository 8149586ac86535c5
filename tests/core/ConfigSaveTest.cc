#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/Config.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::modeOf;
using test::namesIn;
using test::outcomeOf;
using test::readText;
using test::writeText;
using Names = std::vector<std::string>;

class ConfigSave : public ::testing::Test {
  protected:
    ConfigSave() : oldMask_(::umask(022)) {}
    ~ConfigSave() override { ::umask(oldMask_); }

    const test::TempDir dir;
    const std::filesystem::path file = dir / "rules.json";
    const Config config{.defaultProfile = "Work", .rules = {}};
    const std::string text = *config.encode();

  private:
    const mode_t oldMask_;
};

TEST_F(ConfigSave, WritesTheEncodedConfiguration) {
    EXPECT_EQ(outcomeOf(config.save(file)), "ok");
    EXPECT_EQ(readText(file), text);
    EXPECT_EQ(*Config::load(file), config);
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(ConfigSave, ReplacesTheFileInsteadOfWritingIntoIt) {
    writeText(file, "the old text");
    std::filesystem::create_hard_link(file, dir / "old");
    EXPECT_EQ(outcomeOf(config.save(file)), "ok");
    EXPECT_EQ(readText(file), text);
    EXPECT_EQ(readText(dir / "old"), "the old text");
}

TEST_F(ConfigSave, MakesMissingFoldersForTheUserAlone) {
    const std::filesystem::path deep = dir / "a/b/c/rules.json";
    EXPECT_EQ(outcomeOf(config.save(deep)), "ok");
    EXPECT_EQ(readText(deep), text);
    EXPECT_EQ(modeOf(deep), 0600U);
    for (const char* folder : {"a", "a/b", "a/b/c"}) EXPECT_EQ(modeOf(dir / folder), 0700U);
}

TEST_F(ConfigSave, AnExistingFileAndFolderKeepTheirModes) {
    test::setMode(dir.path(), 0755);
    for (const unsigned mode : {0600U, 0644U, 0640U, 0400U, 0777U}) {
        writeText(file, "old");
        test::setMode(file, mode);
        EXPECT_EQ(outcomeOf(config.save(file)), "ok");
        EXPECT_EQ(readText(file), text);
        EXPECT_EQ(modeOf(file), mode);
        std::filesystem::remove(file);
    }
    EXPECT_EQ(modeOf(dir.path()), 0755U);
}

TEST_F(ConfigSave, ASymbolicLinkStaysAndItsTargetIsReplaced) {
    const struct {
        const char* name;
        std::filesystem::path link;    // what rules.json says
        std::filesystem::path target;  // what it means
        bool exists;
    } rows[] = {
        {"relative link", "dotfiles/rules", dir / "dotfiles/rules", true},
        {"absolute link", dir / "dotfiles/rules", dir / "dotfiles/rules", true},
        {"dangling link", "dotfiles/new", dir / "dotfiles/new", false},
        {"dangling link into a missing folder", "missing/x/rules", dir / "missing/x/rules", false},
        {"link to a link", "second", dir / "dotfiles/rules", true},
        {"link through a linked folder", "folder/rules", dir / "dotfiles/rules", true},
    };
    std::filesystem::create_directory(dir / "dotfiles");
    std::filesystem::create_symlink("dotfiles/rules", dir / "second");
    std::filesystem::create_symlink("dotfiles", dir / "folder");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (row.exists) writeText(row.target, "old");
        if (row.exists) test::setMode(row.target, 0640);
        std::filesystem::create_symlink(row.link, file);
        EXPECT_EQ(outcomeOf(config.save(file)), "ok");
        EXPECT_EQ(std::filesystem::read_symlink(file), row.link);
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(row.target)));
        EXPECT_EQ(readText(row.target), text);
        EXPECT_EQ(modeOf(row.target), row.exists ? 0640U : 0600U);
        std::filesystem::remove(file);
    }
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "second"));
    EXPECT_EQ(namesIn(dir / "dotfiles"), (Names{"new", "rules"}));
}

TEST_F(ConfigSave, WhatCannotBeWrittenLeavesEverythingAsItWas) {
    writeText(dir / "plain", "a file");
    std::filesystem::create_directory(dir / "folder");
    std::filesystem::create_symlink("loop", dir / "loop");
    std::filesystem::create_symlink("nowhere", dir / "dangling");
    const Names before = namesIn(dir.path());
    const std::string base = dir.path().string();
    const struct {
        const char* name;
        std::filesystem::path path;
        std::string description;
    } rows[] = {
        {"folder would lie below a file", dir / "plain/x/rules.json",
         "cannot create folder " + base + "/plain/x: Not a directory"},
        {"folder is a file", dir / "plain/rules.json",
         "cannot create folder " + base + "/plain: File exists"},
        {"folder is a dangling link", dir / "dangling/rules.json",
         "cannot create folder " + base + "/dangling: File exists"},
        {"link to itself", dir / "loop", "open failed: Too many levels of symbolic links"},
        {"a folder in the file's place", dir / "folder",
         "replacing the file failed: Is a directory"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(config.save(row.path)), row.description) << row.name;
    }
    EXPECT_EQ(namesIn(dir.path()), before);
    EXPECT_EQ(namesIn(dir / "folder"), Names());
    EXPECT_EQ(readText(dir / "plain"), "a file");
}

TEST_F(ConfigSave, AFolderThatIsNotOursIsAnError) {
    writeText(file, "old");
    test::setMode(dir.path(), 0555);
    EXPECT_EQ(test::inChild([&] {
                  test::becomeUnprivileged();
                  return outcomeOf(config.save(file)) + "\n" +
                         outcomeOf(config.save(dir / "a/rules.json"));
              }),
              "open failed: Permission denied\ncannot create folder " + dir.path().string() +
                  "/a: Permission denied");
    EXPECT_EQ(readText(file), "old");
    test::setMode(dir.path(), 0700);
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(ConfigSave, ATextThatCannotBeEncodedTouchesNothing) {
    writeText(file, "old");
    const Config bad{.defaultProfile = "\xFF", .rules = {}};
    EXPECT_EQ(outcomeOf(bad.save(file)), "a text of the configuration is not UTF-8");
    EXPECT_EQ(outcomeOf(bad.save(dir / "a/rules.json")),
              "a text of the configuration is not UTF-8");
    EXPECT_EQ(readText(file), "old");
    EXPECT_EQ(namesIn(dir.path()), Names{"rules.json"});
}

TEST_F(ConfigSave, EnsureExistsMakesTheStarterFileOnce) {
    const std::filesystem::path deep = dir / "a/b/rules.json";
    EXPECT_EQ(Config::ensureExists(deep), true);
    EXPECT_EQ(readText(deep), *Config().encode());
    EXPECT_EQ(modeOf(deep), 0600U);
    EXPECT_EQ(Config::ensureExists(deep), false);
}

TEST_F(ConfigSave, EnsureExistsLeavesAloneWhateverIsThere) {
    writeText(dir / "empty", "");
    writeText(dir / "broken", "nonsense");
    std::filesystem::create_directory(dir / "folder");
    std::filesystem::create_symlink("nowhere", dir / "dangling");
    std::filesystem::create_symlink("loop", dir / "loop");
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    const Names before = namesIn(dir.path());
    for (const std::string& name : before) {
        EXPECT_EQ(Config::ensureExists(dir / name), false) << name;
    }
    EXPECT_EQ(readText(dir / "empty"), "");
    EXPECT_EQ(readText(dir / "broken"), "nonsense");
    EXPECT_EQ(namesIn(dir.path()), before);
}

TEST_F(ConfigSave, EnsureExistsReportsAFailedSave) {
    writeText(dir / "plain", "");
    EXPECT_EQ(outcomeOf(Config::ensureExists(dir / "plain/x/rules.json")),
              "cannot create folder " + dir.path().string() + "/plain/x: Not a directory");
}

}  // namespace
}  // namespace ferrivane
