#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "core/ChromeProfiles.h"
#include "core/Config.h"
#include "core/port/Paths.h"
#include "tests/support/Child.h"

namespace ferrivane {
namespace {

// The folders of a process with these variables; null means unset.
std::string foldersWith(const char* home, const char* config, const char* state) {
    return test::inChild([&] {
        test::setVariable("HOME", home);
        test::setVariable("XDG_CONFIG_HOME", config);
        test::setVariable("XDG_STATE_HOME", state);
        return Config::fileURL().string() + "\n" + Paths::logDirectory().string() + "\n" +
               ChromeProfiles::localStateURL().string();
    });
}

TEST(Paths, AnAbsoluteVariableWinsOverTheHomeFolder) {
    const char* const usual =
        "/h/.config/ferrivane/rules.json\n"
        "/h/.local/state/ferrivane\n"
        "/h/.config/google-chrome/Local State";
    EXPECT_EQ(foldersWith("/h", nullptr, nullptr), usual);
    EXPECT_EQ(foldersWith("/h", "", ""), usual);
    EXPECT_EQ(foldersWith("/h", "relative", "../state"), usual);
    EXPECT_EQ(foldersWith("/h", "/c", "/s"),
              "/c/ferrivane/rules.json\n/s/ferrivane\n/c/google-chrome/Local State");
}

TEST(Paths, WithoutAHomeVariableTheAccountsHome) {
    const passwd* account = ::getpwuid(::getuid());  // NOLINT(concurrency-mt-unsafe)
    const std::string home = account->pw_dir;
    const std::string expected = home + "/.config/ferrivane/rules.json\n" + home +
                                 "/.local/state/ferrivane\n" + home +
                                 "/.config/google-chrome/Local State";
    EXPECT_EQ(foldersWith(nullptr, nullptr, nullptr), expected);
    EXPECT_EQ(foldersWith("relative", nullptr, nullptr), expected);
}

TEST(Paths, StayTheSameForTheLifeOfTheProcess) {
    EXPECT_EQ(test::inChild([] {
                  test::setVariable("XDG_CONFIG_HOME", "/first");
                  const auto before = Config::fileURL();
                  test::setVariable("XDG_CONFIG_HOME", "/second");
                  return before == Config::fileURL() ? before.string() : "changed";
              }),
              "/first/ferrivane/rules.json");
}

TEST(Paths, ChromesDirectoryIsTheOneThatWasSet) {
    EXPECT_EQ(test::inChild([] {
                  Paths::setChromeUserDataDirectory("/first");
                  Paths::setChromeUserDataDirectory("/x/chromium");
                  return ChromeProfiles::localStateURL().string();
              }),
              "/x/chromium/Local State");
}

}  // namespace
}  // namespace ferrivane
