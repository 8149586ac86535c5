#include <gmock/gmock.h>

#include "tests/app/RouterTest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

constexpr const char* kLaunched = "[INFO]   launched Chrome (pid 500) (0 ms)";
constexpr const char* kWithoutProfile =
    "[WARN] opening without --profile-directory so Chrome does not create a new profile; "
    "known profiles: ";

class RouterFailure : public test::RouterTest {
  protected:
    std::string cannotReadRules(const std::string& reason) const {
        return "[ERROR] cannot read " + rulesFile.string() + ": " + reason +
               "; using built-in defaults";
    }
};

TEST_F(RouterFailure, UnreadableRulesAreReportedForEachLinkAndDefaultsHold) {
    const struct {
        const char* name;
        std::function<void()> arrange;
        const char* reason;
    } rows[] = {
        {"missing", [&] { std::filesystem::remove(rulesFile); },
         "open failed: No such file or directory"},
        {"a folder", [&] { std::filesystem::create_directory(rulesFile); },
         "read failed: Is a directory"},
        {"no JSON",
         [&] {
             std::filesystem::remove(rulesFile);
             writeRules("{\n  nonsense");
         },
         "line 2, column 4: syntax error while parsing object key - invalid literal; expected "
         "string literal"},
        {"no kind of rule",
         [&] {
             writeRules(
                 "{\"rules\": [{\"kind\": \"Host\", \"match\": \"a\", \"profile\": \"b\"}]}");
         },
         "line 1: rules[0].kind: \"Host\" is not one of url, host, app"},
        {"a fault behind good rules",
         [&] {
             writeRules("{\"defaultProfile\": \"Work\", \"logFullURLs\": true,\n\"rules\": 1}");
         },
         "line 2: rules: expected an array, found a number"},
    };
    for (const auto& row : rows) {
        row.arrange();
        for (int link = 0; link < 2; ++link) {
            EXPECT_THAT(
                logOf("https://a/secret"),
                ElementsAre(cannotReadRules(row.reason),
                            "[INFO] https://a/… from unknown app → Home [Default] via default",
                            kLaunched))
                << row.name;
        }
    }
}

TEST_F(RouterFailure, RulesAreNeverCreatedOrRepairedByALink) {
    std::filesystem::remove(rulesFile);
    logOf("https://a/");
    EXPECT_FALSE(std::filesystem::exists(rulesFile));
}

TEST_F(RouterFailure, WithoutACatalogueADirectorysNameIsTakenAtItsWord) {
    const std::string path = (userData / "Local State").string();
    const struct {
        const char* name;
        std::function<void()> arrange;
        std::vector<std::string> errors;
    } rows[] = {
        {"missing",
         [&] { std::filesystem::remove(path); },
         {"[ERROR] cannot read Chrome profiles: open failed: No such file or directory"}},
        {"without the list",
         [&] { writeLocalState("{\"profile\": {}}"); },
         {"[ERROR] cannot read Chrome profiles: no profile.info_cache in " + path}},
        {"an empty list", [&] { writeCatalogue({}); }, {}},
    };
    for (const auto& row : rows) {
        row.arrange();
        writeRules(R"({"defaultProfile": " Profile 12 "})");
        std::vector<std::string> expected = row.errors;
        expected.emplace_back(
            "[INFO] https://a/… from unknown app → Profile 12 [Profile 12] via default");
        expected.emplace_back(kLaunched);
        EXPECT_EQ(logOf("https://a/"), expected) << row.name;
        EXPECT_THAT(fake.browser.given->switches,
                    ElementsAre("--profile-directory=Profile 12", "https://a/"))
            << row.name;

        writeRules(R"({"defaultProfile": "Work"})");
        expected = row.errors;
        expected.emplace_back(
            "[INFO] https://a/… from unknown app → profile \"Work\" NOT FOUND via default");
        expected.emplace_back(kWithoutProfile);
        expected.emplace_back(kLaunched);
        EXPECT_EQ(logOf("https://a/"), expected) << row.name;
        EXPECT_THAT(fake.browser.given->switches, ElementsAre("https://a/")) << row.name;
    }
}

TEST_F(RouterFailure, CatalogueThatIsNoJsonIsReportedAndCountsAsEmpty) {
    writeLocalState("{");
    const auto lines = logOf("https://a/");
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_THAT(lines[0], ::testing::StartsWith("[ERROR] cannot read Chrome profiles: not JSON: "));
    EXPECT_THAT(lines[1], HasSubstr("→ Default [Default] via default"));
}

TEST_F(RouterFailure, WithNothingReadableLinksStillOpen) {
    std::filesystem::remove(rulesFile);
    std::filesystem::remove(userData / "Local State");
    EXPECT_THAT(
        logOf("https://a/"),
        ElementsAre(cannotReadRules("open failed: No such file or directory"),
                    "[ERROR] cannot read Chrome profiles: open failed: No such file or directory",
                    "[INFO] https://a/… from unknown app → Default [Default] via default",
                    kLaunched));
    EXPECT_THAT(outcomes, ElementsAre(true));
}

TEST_F(RouterFailure, OfALaunchIsLoggedShortAndShownInFull) {
    fake.browser.launched = std::unexpected(PlatformError{"cannot start chrome: No such file"});
    EXPECT_THAT(logOf("https://a/secret?q"),
                ElementsAre("[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[ERROR]   Chrome launch failed: cannot start chrome: No such file"));
    EXPECT_THAT(outcomes, ElementsAre(false));
    ASSERT_THAT(fake.dialogs.alerts, SizeIs(1));
    const LaunchFailureAlert& alert = fake.dialogs.alerts[0];
    EXPECT_EQ(alert.title, "Couldn't open the link in Google Chrome");
    EXPECT_EQ(alert.informativeText, "cannot start chrome: No such file\n\nhttps://a/secret?q");
    EXPECT_EQ(alert.reason, "cannot start chrome: No such file");
    EXPECT_EQ(alert.link, "https://a/secret?q");
    EXPECT_THAT(alert.buttons, ElementsAre("Copy Link", "OK"));
    EXPECT_FALSE(alert.isLong());
}

TEST_F(RouterFailure, ALongLinkIsShownInFullToo) {
    const std::string link = "https://a/" + std::string(5000, 'x');
    const auto alert = launchFailureAlert(link, ChromeLauncher::LaunchError{});
    EXPECT_TRUE(alert.isLong());
    EXPECT_TRUE(alert.informativeText.ends_with(link));
}

TEST_F(RouterFailure, EveryLaunchErrorHasItsLineAndItsAlert) {
    const struct {
        const char* name;
        std::function<void()> arrange;
        const char* link;
        const char* reason;
    } rows[] = {
        {"a switch instead of a link", [] {}, " --x", "not a URL:  --x"},
        {"no executable",
         [&] {
             fake.browser.process = 42;
             fake.applications.executables.clear();
         },
         "https://a/", "no executable inside /apps/google-chrome.desktop"},
        {"no Chrome", [&] { fake.applications.locations.clear(); }, "https://a/",
         "Google Chrome is not installed"},
    };
    for (const auto& row : rows) {
        row.arrange();
        EXPECT_EQ(logOf(row.link).at(1),
                  std::string("[ERROR]   Chrome launch failed: ") + row.reason)
            << row.name;
        EXPECT_EQ(fake.dialogs.alerts.back().informativeText,
                  std::string(row.reason) + "\n\n" + row.link)
            << row.name;
    }
    EXPECT_THAT(outcomes, ElementsAre(false, false, false));
}

TEST_F(RouterFailure, LinkIsNotTriedAgain) {
    fake.browser.launched = std::unexpected(PlatformError{"no"});
    logOf("https://a/");
    EXPECT_EQ(fake.calls.count("browser.launch"), 1U);
    EXPECT_TRUE(fake.mainLoop.isIdle());
}

TEST_F(RouterFailure, IsToldToWhoWaitsOnlyAfterTheAlert) {
    fake.applications.locations.clear();
    std::size_t alerts = 0;
    router.route("https://a/", std::nullopt, std::nullopt,
                 [&](bool) { alerts = fake.dialogs.alerts.size(); });
    EXPECT_EQ(alerts, 1U);
}

TEST_F(RouterFailure, NextLinkIsUntouchedByIt) {
    fake.browser.launched = std::unexpected(PlatformError{"no"});
    logOf("https://a/");
    fake.browser.launched = 501;
    EXPECT_EQ(logOf("https://a/").at(1), "[INFO]   launched Chrome (pid 501) (0 ms)");
    EXPECT_THAT(outcomes, ElementsAre(false, true));
}

}  // namespace
}  // namespace ferrivane
