// What the tests of the application have in common: a fake desktop, and real files in a folder of
// the test's own.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "core/ChromeProfile.h"
#include "core/Log.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TempDir.h"

namespace ferrivane::test {

// Lines of a log file without their time stamps. A line without one is marked.
std::vector<std::string> linesWithoutTime(const std::filesystem::path& file);

class AppTest : public ::testing::Test {
  protected:
    // Chrome's folder is `userData` in every test, and empty.
    AppTest();

    // Chrome's folder is this one from now on.
    static void useUserData(const std::filesystem::path& directory);
    void writeRules(std::string_view json) const;
    void writeCatalogue(const std::vector<ChromeProfile>& profiles) const;
    void writeLocalState(std::string_view json) const;

    // "[LEVEL] message", everything that was logged since the last call.
    std::vector<std::string> newLogLines();

    const TempDir dir;
    const std::filesystem::path rulesFile = dir / "rules.json";
    const std::filesystem::path userData = dir / "user-data";
    FakePlatform fake;
    Log log{dir / "log"};

  private:
    std::size_t linesSeen = 0;
};

}  // namespace ferrivane::test
