// What a full disk leaves of a line, and what a disk without locks does.
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "core/Log.h"
#include "tests/core/LogLines.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/RefusedCalls.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

constexpr std::chrono::seconds kLong{60};
constexpr std::uintmax_t kMegabyte = std::uintmax_t{1024} * 1024;

// The limit before. Only for children.
rlim_t limitFiles(rlim_t bytes) {
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlim_t before = std::exchange(limit.rlim_cur, bytes);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return before;
}

TEST(LogFaults, ALineThatDoesNotFitLeavesNoPartOfIt) {
    const test::TempDir dir;
    EXPECT_EQ(test::inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  Log log(dir.path());
                  log.info("earlier");
                  if (!log.flush(kLong)) return "not written";
                  const rlim_t before = limitFiles(100);
                  log.info(std::string(100, 'x'));
                  log.info("fits");
                  if (!log.flush(kLong)) return "not written";
                  limitFiles(before);
                  log.info("later");
                  return log.flush(kLong) ? "ok" : "not written";
              }),
              "ok");
    std::vector<std::string> lines;
    for (const auto& line : test::linesOf(dir / "ferrivane.log")) {
        lines.push_back(test::withoutStamp(line));
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"[INFO] earlier", "[INFO] fits", "[INFO] later"}));
}

TEST(LogFaults, WithoutALockTheFileIsMovedOnlyAtTwiceTheSize) {
    const struct {
        std::uintmax_t size;
        bool isMoved;
    } rows[] = {{kMegabyte * 3, false}, {kMegabyte * 4 + 1, true}};
    for (const auto& row : rows) {
        const test::TempDir dir;
        test::writeText(dir / "ferrivane.log", "earlier\n");
        std::filesystem::resize_file(dir / "ferrivane.log", row.size);
        EXPECT_EQ(test::inChild([&] {
                      test::refuse(test::Call::lockFile, ENOLCK);
                      Log log(dir.path());
                      log.info("later");
                      return log.flush(kLong) ? "ok" : "not written";
                  }),
                  "ok");
        EXPECT_EQ(std::filesystem::exists(dir / "ferrivane.log.1"), row.isMoved) << row.size;
    }
}

}  // namespace
}  // namespace ferrivane
