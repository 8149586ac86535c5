#include "tests/app/RouterTest.h"

#include <gmock/gmock.h>

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

constexpr const char* kLaunched = "[INFO]   launched Chrome (pid 500) (0 ms)";

class RouterLog : public test::RouterTest {};

TEST_F(RouterLog, RoutineLinkLeavesTwoLines) {
    writeCatalogue({{"Default", "Default", {}, {}}});
    EXPECT_THAT(
        logOf("https://work.example/secret?q#f"),
        ElementsAre(
            "[INFO] https://work.example/… from unknown app → Default [Default] via default",
            kLaunched));
    EXPECT_THAT(outcomes, ElementsAre(true));
}

TEST_F(RouterLog, SummaryNamesTheSenderAsFarAsItIsKnown) {
    const struct {
        const char* name;
        std::optional<Opener> opener;
        const char* shown;
    } rows[] = {
        {"nobody", {}, "unknown app"},
        {"somebody of whom nothing is known", Opener{}, "unknown app"},
        {"name and id", Opener{"Mail", "org.example.Mail", "/opt/mail"}, "Mail (org.example.Mail)"},
        {"name alone", Opener{"Mail", {}, {}}, "Mail"},
        {"id alone", Opener{{}, "org.example.Mail", {}}, "org.example.Mail"},
        {"path alone", Opener{{}, {}, "/opt/mail"}, "/opt/mail"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(
            logOf("https://a/", row.opener).at(0),
            std::string("[INFO] https://a/… from ") + row.shown + " → Home [Default] via default")
            << row.name;
    }
}

TEST_F(RouterLog, SummaryNamesTheRuleAsItStandsInTheFileCountedFromOne) {
    writeRules(R"({"rules": [
        {"kind": "app", "match": "Mail", "profile": "Work"},
        {"kind": "host", "match": " a.b\t", "profile": "me@work.example"},
        {"kind": "url", "match": "/Path\"?", "profile": "Profile 2", "comment": "c"}]})");
    const struct {
        const char* name;
        const char* url;
        std::optional<Opener> opener;
        const char* reason;
    } rows[] = {
        {"the first rule", "https://x/", Opener{"Mail", {}, {}}, "rule #1 (app \"Mail\")"},
        {"white space around the pattern", "https://sub.a.b/", {}, "rule #2 (host \" a.b\t\")"},
        {"a quotation mark in the pattern", "https://x/path\"?", {}, "rule #3 (url \"/Path\"?\")"},
        {"no rule", "https://x/", {}, "default"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(logOf(row.url, row.opener).at(0),
                    ::testing::EndsWith(std::string(" via ") + row.reason))
            << row.name;
    }
}

TEST_F(RouterLog, ProfileIsShownByNameAndDirectoryHoweverTheRuleCallsIt) {
    for (const char* profile : {"Profile 2", "work", " Work ", "ME@work.example"}) {
        writeRules(R"({"defaultProfile": ")" + std::string(profile) + "\"}");
        EXPECT_EQ(logOf("https://a/").at(0),
                  "[INFO] https://a/… from unknown app → Work [Profile 2] via default")
            << profile;
        EXPECT_THAT(fake.browser.given->switches,
                    ElementsAre("--profile-directory=Profile 2", "https://a/"))
            << profile;
    }
}

TEST_F(RouterLog, UnknownProfileIsLoggedWithAllThatAreKnownAndNotAskedFor) {
    writeRules(R"({"rules": [{"kind": "host", "match": "a", "profile": "Gone"}]})");
    EXPECT_THAT(
        logOf("https://a/"),
        ElementsAre("[INFO] https://a/… from unknown app → profile \"Gone\" NOT FOUND via rule #1 "
                    "(host \"a\")",
                    "[WARN] opening without --profile-directory so Chrome does not create a new "
                    "profile; known profiles: Home [Default], Work [Profile 2]",
                    kLaunched));
    EXPECT_THAT(fake.browser.given->switches, ElementsAre("https://a/"));
}

TEST_F(RouterLog, DirectoryThatTheCatalogueDoesNotHoldIsUnknownToo) {
    writeRules(R"({"defaultProfile": "Profile 7"})");
    EXPECT_THAT(logOf("https://a/"), SizeIs(3));
    EXPECT_THAT(fake.browser.given->switches, ElementsAre("https://a/"));
}

TEST_F(RouterLog, LinksAreShortenedUnlessTheRulesAskForThemInFull) {
    EXPECT_THAT(logOf("https://a/secret").at(0), HasSubstr("] https://a/… from"));
    writeRules(R"({"logFullURLs": true})");
    EXPECT_THAT(logOf("https://a/secret").at(0), HasSubstr("] https://a/secret from"));
    writeRules(R"({"logFullURLs": false})");
    EXPECT_THAT(logOf("mailto:somebody@example.org?subject=x").at(0),
                HasSubstr("] mailto:somebody@example.… from"));
}

TEST_F(RouterLog, TimeIsInWholeMillisecondsAndCoversTheLaunch) {
    const struct {
        test::FakeMainLoop::Duration takes;
        const char* line;
    } rows[] = {
        {999us, "[INFO]   launched Chrome (pid 500) (0 ms)"},
        {12'999us, "[INFO]   launched Chrome (pid 500) (12 ms)"},
        {1500ms, "[INFO]   launched Chrome (pid 500) (1500 ms)"},
    };
    for (const auto& row : rows) {
        fake.browser.launchTakes = row.takes;
        EXPECT_EQ(logOf("https://a/").at(1), row.line);
    }
}

TEST_F(RouterLog, OutcomeLineComesWithTheOutcome) {
    fake.browser.launchTakes = 70ms;
    router.route("https://a/", std::nullopt);
    fake.mainLoop.advance(69ms);
    EXPECT_THAT(newLogLines(), SizeIs(1));
    fake.mainLoop.advance(1ms);
    EXPECT_THAT(newLogLines(), ElementsAre("[INFO]   launched Chrome (pid 500) (70 ms)"));
}

TEST_F(RouterLog, LinesOfLinksUnderWayTogetherInterleaveWhole) {
    fake.browser.launchTakes = 10ms;
    router.route("https://a/", std::nullopt);
    router.route("https://b/", std::nullopt);
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(newLogLines(),
                ElementsAre("[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[INFO] https://b/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (10 ms)",
                            "[INFO]   launched Chrome (pid 500) (20 ms)"));
}

TEST_F(RouterLog, EachLinkReadsRulesAndCatalogueAfresh) {
    const auto lineFor = [&](const char* url) {
        router.route(url, std::nullopt);
        return newLogLines().at(0);
    };
    EXPECT_THAT(lineFor("https://a/"), HasSubstr("→ Home [Default] via default"));
    writeRules(R"({"rules": [{"kind": "host", "match": "a", "profile": "Work"}]})");
    EXPECT_THAT(lineFor("https://a/"), HasSubstr("→ Work [Profile 2] via rule #1"));
    writeCatalogue({{"Profile 9", "Work", {}, {}}});
    EXPECT_THAT(lineFor("https://a/"), HasSubstr("→ Work [Profile 9] via rule #1"));
}

TEST_F(RouterLog, TokenGoesToTheLauncher) {
    router.route("https://a/", std::nullopt, "tok");
    EXPECT_EQ(fake.browser.given->activationToken, "tok");
}

TEST_F(RouterLog, NobodyNeedsToWaitForTheEnd) {
    router.route("https://a/", std::nullopt);
    EXPECT_THAT(newLogLines(), SizeIs(2));
}

TEST_F(RouterLog, WholeLinkGoesToChromeWhateverTheLogShows) {
    const std::string link = "https://a/secret\n\xFF\u202E";
    logOf(link);
    EXPECT_EQ(fake.browser.given->switches.back(), link);
}

}  // namespace
}  // namespace ferrivane
