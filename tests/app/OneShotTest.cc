#include <gmock/gmock.h>

#include "Ferrivane/OneShot.h"
#include "tests/app/AppTest.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Files.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::SizeIs;

class OneShot : public test::AppTest {
  protected:
    OneShot() {
        writeRules("{}");
        writeCatalogue({{"Default", "Home", {}, {}}});
    }

    int statusOf(const std::vector<std::string>& links) {
        return routeAndExit(fake.platform(), log, links, rulesFile);
    }
};

TEST_F(OneShot, RoutesInTheGivenOrderOneAfterAnother) {
    fake.browser.launchTakes = 100ms;
    EXPECT_EQ(statusOf({"https://c/", "https://a/", "https://b/"}), 0);
    EXPECT_THAT(newLogLines(),
                ElementsAre("[INFO] https://c/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (100 ms)",
                            "[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (100 ms)",
                            "[INFO] https://b/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (100 ms)"));
}

TEST_F(OneShot, StatusSaysWhetherEveryLinkWasOpened) {
    const struct {
        const char* name;
        std::vector<std::string> links;
        int status;
    } rows[] = {
        {"one opened", {"https://a/"}, 0},
        {"all opened", {"https://a/", "https://b/"}, 0},
        {"one failed", {"-x"}, 1},
        {"the first failed", {"-x", "https://a/"}, 1},
        {"the last failed", {"https://a/", "-x"}, 1},
        {"all failed", {"-x", "-y"}, 1},
    };
    for (const auto& row : rows) {
        fake.calls.clear();
        EXPECT_EQ(statusOf(row.links), row.status) << row.name;
        EXPECT_THAT(fake.calls.of({"caller.release"}),
                    ElementsAre("caller.release " + std::to_string(row.status)))
            << row.name;
    }
}

TEST_F(OneShot, FailedLinkDoesNotHoldUpTheNext) {
    EXPECT_EQ(statusOf({"-x", "https://a/"}), 1);
    EXPECT_THAT(fake.dialogs.alerts, SizeIs(1));
    EXPECT_THAT(fake.calls.of({"browser.launch"}),
                ElementsAre("browser.launch /apps/google-chrome.desktop "
                            "[--profile-directory=Default] [https://a/]"));
}

TEST_F(OneShot, CallerGoesOnBeforeWhatIsStillToBeDone) {
    const test::FakeChrome chrome(dir.path());
    fake.browser.process = 42;
    fake.frontmost.front = {.process = 7, .name = "Mail"};
    EXPECT_EQ(statusOf({"https://a/"}), 0);
    EXPECT_THAT(fake.calls.of({"caller.release", "frontmost.current", "frontmost.activate 42"}),
                ElementsAre("caller.release 0", "frontmost.current", "frontmost.activate 42"));
    EXPECT_THAT(newLogLines(),
                ElementsAre("[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[INFO]   handed to running Chrome (pid 42) over its singleton socket "
                            "(0 ms)",
                            "[WARN] Chrome was not frontmost (front: Mail); activated it "
                            "(handover=false)"));
}

TEST_F(OneShot, LogIsOnTheDiskWhenTheCallerGoesOn) {
    std::vector<std::string> lines;
    fake.caller.whenReleased = [&] { lines = test::linesWithoutTime(log.fileURL); };
    statusOf({"https://a/", "-x"});
    EXPECT_THAT(lines,
                ElementsAre("[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (0 ms)",
                            "[INFO] -x from unknown app → Home [Default] via default",
                            "[ERROR]   Chrome launch failed: not a URL: -x"));
}

TEST_F(OneShot, TokenIsForTheFirstLinkAlone) {
    fake.activationToken = "tok";
    statusOf({"https://a/", "https://b/"});
    EXPECT_THAT(fake.calls.of({"browser.launch"}),
                ElementsAre("browser.launch /apps/google-chrome.desktop "
                            "[--profile-directory=Default] [https://a/] token=tok",
                            "browser.launch /apps/google-chrome.desktop "
                            "[--profile-directory=Default] [https://b/]"));
}

TEST_F(OneShot, SenderIsAskedForOnceAndIsThatOfEveryLink) {
    fake.caller.application = Opener{"Mail", "org.example.Mail", {}};
    statusOf({"https://a/", "https://b/"});
    EXPECT_EQ(fake.calls.count("caller.opener"), 1U);
    const auto lines = newLogLines();
    EXPECT_THAT(lines.at(0), ::testing::HasSubstr(" from Mail (org.example.Mail) → "));
    EXPECT_THAT(lines.at(2), ::testing::HasSubstr(" from Mail (org.example.Mail) → "));
}

TEST_F(OneShot, FirstStartWritesTheStarterRules) {
    std::filesystem::remove(rulesFile);
    EXPECT_EQ(statusOf({"https://a/"}), 0);
    EXPECT_THAT(newLogLines(),
                ElementsAre("[INFO] created starter config at " + rulesFile.string(),
                            "[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (0 ms)"));
    EXPECT_EQ(Config::load(rulesFile), Config());
    EXPECT_EQ(test::modeOf(rulesFile), 0600U);

    statusOf({"https://a/"});
    EXPECT_THAT(newLogLines(), SizeIs(2));
}

TEST_F(OneShot, StarterRulesThatCannotBeWrittenAreReportedAndTheLinkOpens) {
    const std::filesystem::path impossible = rulesFile / "below-a-file" / "rules.json";
    EXPECT_EQ(routeAndExit(fake.platform(), log, {"https://a/"}, impossible), 0);
    EXPECT_THAT(newLogLines(),
                ElementsAre("[ERROR] cannot create config: cannot create folder " +
                                (rulesFile / "below-a-file").string() + ": Not a directory",
                            "[ERROR] cannot read " + impossible.string() +
                                ": open failed: Not a directory; using built-in defaults",
                            "[INFO] https://a/… from unknown app → Home [Default] via default",
                            "[INFO]   launched Chrome (pid 500) (0 ms)"));
}

TEST_F(OneShot, TwentyThousandLinksAreNoDeeperThanOne) {
    constexpr std::size_t kCount = 20'000;
    std::vector<std::string> links;
    std::vector<std::string> launches;
    for (std::size_t i = 0; i < kCount; ++i) {
        links.push_back("https://a/" + std::to_string(i));
        launches.push_back(
            "browser.launch /apps/google-chrome.desktop "
            "[--profile-directory=Default] [" +
            links.back() + "]");
    }
    Log nowhere(rulesFile / "below-a-file");  // this is not about the time of forty thousand lines
    EXPECT_EQ(routeAndExit(fake.platform(), nowhere, links, rulesFile), 0);
    EXPECT_EQ(fake.calls.of({"browser.launch"}), launches);
    EXPECT_EQ(fake.calls.texts().back(), "caller.release 0");
}

}  // namespace
}  // namespace ferrivane
