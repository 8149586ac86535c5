// Where Chrome is, the sandbox flag, the switches of one link, and the texts of errors.
#include <gmock/gmock.h>
#include <stdlib.h>

#include "Ferrivane/ChromeLauncher.h"
#include "tests/support/Child.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using ChromeLauncher::LaunchError;
using ::testing::ElementsAre;

TEST(LauncherFacts, EveryErrorHasItsText) {
    const struct {
        const char* name;
        LaunchError error;
        const char* description;
    } rows[] = {
        {"no executable",
         {LaunchError::Kind::noExecutable, "/apps/chrome.desktop"},
         "no executable inside /apps/chrome.desktop"},
        {"no URL", {LaunchError::Kind::malformedURL, "-x"}, "not a URL: -x"},
        {"no Chrome", {LaunchError::Kind::chromeNotFound}, "Google Chrome is not installed"},
        {"the desktop's own words", {LaunchError::Kind::platform, "fork failed"}, "fork failed"},
        {"made without a reason", {}, "Google Chrome is not installed"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.error.description(), row.description) << row.name;
}

TEST(LauncherFacts, SwitchesAreTheProfileThenTheLinkAsItIs) {
    const struct {
        const char* name;
        std::string url;
        std::optional<std::string> directory;
        std::vector<std::string> switches;
    } rows[] = {
        {"no profile", "https://a/", {}, {"https://a/"}},
        {"a profile", "https://a/", "Default", {"--profile-directory=Default", "https://a/"}},
        {"a blank in the profile's directory",
         "https://a/",
         "Profile 2",
         {"--profile-directory=Profile 2", "https://a/"}},
        {"quotes are not escaped",
         "https://a/",
         "a\"b'c",
         {"--profile-directory=a\"b'c", "https://a/"}},
        {"an empty directory is one too", "https://a/", "", {"--profile-directory=", "https://a/"}},
        {"a link is not encoded", "https://a/ b\n\xFF", {}, {"https://a/ b\n\xFF"}},
        {"no link", "", {}, {""}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ChromeLauncher::arguments(row.url, row.directory), row.switches) << row.name;
    }
}

TEST(LauncherFacts, RegisteredChromeIsFoundWhereverItIs) {
    const test::TempDir dir;
    const test::FakePlatform fake;
    EXPECT_EQ(ChromeLauncher::chromeAppURL(fake.applications, dir.path()),
              "/apps/google-chrome.desktop");
    EXPECT_THAT(fake.calls.texts(), ElementsAre("applications.location com.google.Chrome"));
}

TEST(LauncherFacts, ChromeThatIsNotRegisteredIsFoundInItsUsualPlace) {
    const test::TempDir dir;
    test::FakePlatform fake;
    fake.applications.locations.clear();
    EXPECT_EQ(ChromeLauncher::chromeAppURL(fake.applications, dir.path()), dir.path());
    EXPECT_EQ(ChromeLauncher::chromeAppURL(fake.applications, dir / "none"), std::nullopt);
}

TEST(LauncherFacts, LocationIsAskedAnewEachTime) {
    test::FakePlatform fake;
    fake.applications.locations.clear();
    EXPECT_EQ(ChromeLauncher::chromeAppURL(fake.applications, "/none"), std::nullopt);
    fake.applications.locations.emplace("com.google.Chrome", "/new.desktop");
    EXPECT_EQ(ChromeLauncher::chromeAppURL(fake.applications, "/none"), "/new.desktop");
}

TEST(LauncherFacts, UsualPlaceIsThatOfTheMac) {
    EXPECT_EQ(ChromeLauncher::fallbackLocation, "/Applications/Google Chrome.app");
}

TEST(LauncherFacts, SandboxMarkerCountsWhateverItsValue) {
    const struct {
        const char* name;
        const char* value;  // null: not set
        const char* answer;
    } rows[] = {
        {"not set", nullptr, "no"}, {"a value", "com.example", "yes"}, {"empty", "", "yes"}};
    for (const auto& row : rows) {
        EXPECT_EQ(test::inChild([&] {
                      // NOLINTNEXTLINE(concurrency-mt-unsafe)
                      if (row.value != nullptr) ::setenv("APP_SANDBOX_CONTAINER_ID", row.value, 1);
                      return ChromeLauncher::sandboxMarkerPresent() ? "yes" : "no";
                  }),
                  row.answer)
            << row.name;
    }
}

TEST(LauncherFacts, SandboxFlagIsFoundOutOnce) {
    EXPECT_EQ(test::inChild([] {
                  const bool before = ChromeLauncher::isSandboxed();
                  // NOLINTBEGIN(concurrency-mt-unsafe)
                  if (before) ::unsetenv("APP_SANDBOX_CONTAINER_ID");
                  if (!before) ::setenv("APP_SANDBOX_CONTAINER_ID", "", 1);
                  // NOLINTEND(concurrency-mt-unsafe)
                  return ChromeLauncher::isSandboxed() == before ? "kept" : "changed";
              }),
              "kept");
}

}  // namespace
}  // namespace ferrivane
