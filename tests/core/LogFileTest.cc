#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "core/Log.h"
#include "core/support/FileDescriptor.h"
#include "tests/core/LogLines.h"
#include "tests/support/Child.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::kLogRotatesAbove;
using test::linesOf;
using test::namesIn;
using test::withoutStamp;
using test::writeText;
using Names = std::vector<std::string>;
constexpr std::chrono::seconds kLong{60};

class LogFile : public ::testing::Test {
  protected:
    LogFile() : oldMask_(::umask(022)) {}
    ~LogFile() override { ::umask(oldMask_); }

    std::string lastLine() const { return withoutStamp(linesOf(file).back()); }

    const test::TempDir dir;
    const std::filesystem::path file = dir / "ferrivane.log";
    const std::filesystem::path older = dir / "ferrivane.log.1";

  private:
    const mode_t oldMask_;
};

void logLine(Log& log, const char* message) {
    log.info(message);
    ASSERT_TRUE(log.flush(kLong));
}

TEST_F(LogFile, FolderAndFileAreForTheUserAlone) {
    Log log(dir / "a/b");
    for (const char* folder : {"a", "a/b"}) EXPECT_EQ(test::modeOf(dir / folder), 0700U);
    EXPECT_EQ(namesIn(dir / "a/b"), Names());
    logLine(log, "x");
    EXPECT_EQ(test::modeOf(dir / "a/b/ferrivane.log"), 0600U);
    EXPECT_EQ(namesIn(dir / "a/b"), Names{"ferrivane.log"}) << "no lock file beside it";
}

TEST_F(LogFile, AnExistingFolderAndFileKeepTheirModes) {
    test::setMode(dir.path(), 0755);
    writeText(file, "old\n");
    test::setMode(file, 0640);
    Log log(dir.path());
    logLine(log, "x");
    EXPECT_EQ(test::modeOf(dir.path()), 0755U);
    EXPECT_EQ(test::modeOf(file), 0640U);
    EXPECT_EQ(linesOf(file).at(0), "old") << "lines are appended";
    EXPECT_EQ(lastLine(), "[INFO] x");
}

TEST_F(LogFile, IsMovedAsideOnlyAboveTheLimit) {
    Log log(dir.path());
    writeText(file, std::string(kLogRotatesAbove, 'x'));
    logLine(log, "fits");
    EXPECT_FALSE(std::filesystem::exists(older));
    EXPECT_GT(std::filesystem::file_size(file), kLogRotatesAbove);

    logLine(log, "does not");
    EXPECT_EQ(linesOf(file).size(), 1U);
    EXPECT_EQ(lastLine(), "[INFO] does not");
    EXPECT_TRUE(test::readText(older).ends_with("[INFO] fits\n")) << "no line is lost";
}

TEST_F(LogFile, OneByteAboveTheLimitIsEnough) {
    Log log(dir.path());
    writeText(file, std::string(kLogRotatesAbove + 1, 'x'));
    writeText(older, "the generation before");
    test::setMode(file, 0640);
    logLine(log, "new");
    EXPECT_EQ(linesOf(file).size(), 1U);
    EXPECT_EQ(test::readText(older), std::string(kLogRotatesAbove + 1, 'x'));
    EXPECT_EQ(test::modeOf(file), 0600U);
    EXPECT_EQ(namesIn(dir.path()), (Names{"ferrivane.log", "ferrivane.log.1"}));
}

TEST_F(LogFile, WhenItCannotBeMovedItGrows) {
    Log log(dir.path());
    std::filesystem::create_directory(older);
    writeText(file, std::string(kLogRotatesAbove + 1, 'x') + "\n");
    logLine(log, "appended");
    EXPECT_GT(std::filesystem::file_size(file), kLogRotatesAbove + 1);
    EXPECT_EQ(lastLine(), "[INFO] appended");
}

TEST_F(LogFile, IsMadeAnewAfterItWasDeletedOrMoved) {
    Log log(dir.path());
    logLine(log, "one");
    std::filesystem::remove(file);
    logLine(log, "two");
    EXPECT_EQ(linesOf(file).size(), 1U);
    EXPECT_EQ(lastLine(), "[INFO] two");
    std::filesystem::rename(file, dir / "kept");
    logLine(log, "three");
    EXPECT_EQ(linesOf(file).size(), 1U);
    EXPECT_EQ(lastLine(), "[INFO] three");
}

TEST_F(LogFile, LinesAreLostWhileTheFolderIsMissing) {
    const std::filesystem::path folder = dir / "a/b";
    Log log(folder);
    logLine(log, "one");
    std::filesystem::remove_all(dir / "a");
    logLine(log, "two");
    EXPECT_FALSE(std::filesystem::exists(folder));
    std::filesystem::create_directories(folder);
    logLine(log, "three");
    EXPECT_EQ(withoutStamp(linesOf(folder / "ferrivane.log").at(0)), "[INFO] three");
}

TEST_F(LogFile, AFolderThatCannotBeMadeIsNoFailure) {
    writeText(dir / "plain", "");
    for (const char* folder : {"plain", "plain/x"}) {
        Log log(dir / folder);
        logLine(log, "lost");
    }
    EXPECT_EQ(namesIn(dir.path()), Names{"plain"});
}

TEST_F(LogFile, SomethingElseInItsPlaceIsLeftAlone) {
    Log log(dir.path());
    std::filesystem::create_directory(file);
    logLine(log, "lost");
    EXPECT_EQ(namesIn(file), Names());
    std::filesystem::remove(file);

    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    logLine(log, "nobody reads");
    const FileDescriptor reader(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    logLine(log, "somebody reads");
    char byte = 0;
    EXPECT_EQ(::read(reader.get(), &byte, 1), 0) << "nothing was written into the pipe";
    std::filesystem::remove(file);

    std::filesystem::create_symlink("ferrivane.log", file);
    logLine(log, "a link to itself");
    std::filesystem::remove(file);
    std::filesystem::create_symlink("/dev/null", file);
    logLine(log, "a device");
    std::filesystem::remove(file);
    logLine(log, "at last");
    EXPECT_EQ(lastLine(), "[INFO] at last");
}

TEST_F(LogFile, ALinkInPlaceOfTheOlderGenerationIsReplacedAndNotFollowed) {
    test::writeText(dir / "precious", "kept");
    std::filesystem::create_symlink("precious", older);
    Log log(dir.path());
    logLine(log, "x");
    std::filesystem::resize_file(file, kLogRotatesAbove + 1);
    logLine(log, "y");
    EXPECT_EQ(test::readText(dir / "precious"), "kept");
    EXPECT_EQ(std::filesystem::file_size(older), kLogRotatesAbove + 1);
    EXPECT_FALSE(std::filesystem::is_symlink(older));
}

TEST_F(LogFile, ASymbolicLinkIsFollowed) {
    std::filesystem::create_symlink("elsewhere", file);
    Log log(dir.path());
    logLine(log, "x");
    EXPECT_EQ(withoutStamp(linesOf(dir / "elsewhere").at(0)), "[INFO] x");
    EXPECT_TRUE(std::filesystem::is_symlink(file));
}

TEST_F(LogFile, LaterLinesAppearOnceAFullDiskHasRoom) {
    EXPECT_EQ(test::inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  rlimit limit{};
                  ::getrlimit(RLIMIT_FSIZE, &limit);
                  const rlim_t before = limit.rlim_cur;
                  limit.rlim_cur = 50;
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  Log log(dir.path());
                  log.info(std::string(100, 'x'));
                  log.info("lost");
                  if (!log.flush(kLong)) return "not written";
                  limit.rlim_cur = before;
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  log.info("later");
                  return log.flush(kLong) ? "ok" : "not written";
              }),
              "ok");
    EXPECT_TRUE(test::readText(file).ends_with("[INFO] later\n"));
}

TEST_F(LogFile, NoDescriptorStaysOpenBetweenLines) {
    Log log(dir.path());
    logLine(log, "x");
    const std::size_t before = test::openDescriptors();
    for (int i = 0; i < 100; ++i) log.info("x");
    ASSERT_TRUE(log.flush(kLong));
    EXPECT_EQ(test::openDescriptors(), before);
}

}  // namespace
}  // namespace ferrivane
