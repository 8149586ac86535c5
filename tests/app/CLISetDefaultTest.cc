#include <gmock/gmock.h>

#include "tests/app/CLITest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const CLI::Commands::SetDefault kSet{{}};
const CLI::Commands::SetDefault kRestore{"com.google.Chrome"};

class CLISetDefault : public test::CLITest {
  protected:
    CLISetDefault() {
        auto& applications = fake.applications;
        applications.bundle = {"com.hollowmere.ferrivane", "1.2.3", own};
        applications.identifiers = {
            {own, "com.hollowmere.ferrivane"}, {chrome, "google-chrome"}, {other, "other"}};
        applications.handlers = {{"http", other}, {"https", other}};
    }

    std::vector<std::string> requests() const {
        return fake.calls.of({"applications.setHandler", "applications.overridingSetting"});
    }

    const std::filesystem::path own = "/apps/com.hollowmere.ferrivane.desktop";
    const std::filesystem::path chrome = "/apps/google-chrome.desktop";
    const std::filesystem::path other = "/apps/other.desktop";
};

TEST_F(CLISetDefault, TheInstalledProgramBecomesTheHandler) {
    EXPECT_EQ(
        seen(kSet),
        (Seen{"asking the desktop to make com.hollowmere.ferrivane.desktop the default browser…\n"
              "  http: ok\n"
              "  https: ok\n",
              "", 0}));
    EXPECT_EQ(fake.applications.handlers.at("http"), own);
    EXPECT_EQ(fake.applications.handlers.at("https"), own);
}

TEST_F(CLISetDefault, ChromeBecomesTheHandlerAgain) {
    fake.applications.bundle = {};  // from wherever the program runs
    EXPECT_EQ(seen(kRestore),
              (Seen{"asking the desktop to make google-chrome.desktop the default browser…\n"
                    "  http: ok\n"
                    "  https: ok\n",
                    "", 0}));
    EXPECT_THAT(requests(),
                ElementsAre("applications.setHandler http /apps/google-chrome.desktop",
                            "applications.setHandler https /apps/google-chrome.desktop",
                            "applications.overridingSetting /apps/google-chrome.desktop"));
}

TEST_F(CLISetDefault, ApplicationThatIsNotThereIsNotAskedFor) {
    fake.applications.locations.clear();
    EXPECT_EQ(seen(kRestore), (Seen{"app com.google.Chrome not found\n", "", 1}));
    EXPECT_EQ(seen(CLI::Commands::SetDefault{""}), (Seen{"app  not found\n", "", 1}));
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(CLISetDefault, ProgramThatIsNotInstalledCannotBecomeTheHandler) {
    for (const auto& identifier : {std::optional<std::string>(), std::optional<std::string>("x")}) {
        fake.applications.bundle.identifier = identifier;
        fake.desktop = Desktop::freedesktop;
        EXPECT_EQ(seen(kSet),
                  (Seen{"run this from the installed program: /usr/bin/Ferrivane --set-default\n",
                        "", 1}));
        fake.desktop = Desktop::macOS;
        EXPECT_EQ(seen(kSet),
                  (Seen{"run this from the installed app: "
                        "~/Applications/Ferrivane.app/Contents/MacOS/Ferrivane --set-default\n",
                        "", 1}));
    }
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(CLISetDefault, OnMacOSThePersonConfirms) {
    fake.desktop = Desktop::macOS;
    for (const char* location : {"/Applications/Ferrivane.app", "/Applications/Ferrivane.app/"}) {
        fake.applications.bundle.location = location;
        fake.applications.identifiers[location] = "com.hollowmere.ferrivane";
        EXPECT_EQ(
            seen(kSet),
            (Seen{"asking macOS to make Ferrivane.app the default browser… confirm the dialog\n"
                  "  http: ok\n"
                  "  https: ok\n",
                  "", 0}))
            << location;
    }
}

TEST_F(CLISetDefault, AnswersAreAwaited) {
    fake.applications.setHandlerTakes = 20s;
    EXPECT_EQ(seen(kSet).status, 0);
    EXPECT_EQ(fake.mainLoop.elapsed(), 40s);
    EXPECT_THAT(
        fake.calls.timedTexts(),
        ::testing::IsSupersetOf({"0 ms: applications.setHandler http " + own.string(),
                                 "20000 ms: applications.setHandler https " + own.string(),
                                 "40000 ms: applications.overridingSetting " + own.string()}));
}

TEST_F(CLISetDefault, NothingElseIsAwaited) {
    fake.mainLoop.after(1h, [] {});
    seen(kSet);
    EXPECT_EQ(fake.mainLoop.elapsed(), 0s);
    EXPECT_FALSE(fake.mainLoop.isStopped()) << "a loop that does not run";
    fake.applications.handlers.clear();
    fake.applications.setHandlerTakes = 1s;
    seen(kSet);
    EXPECT_EQ(fake.mainLoop.elapsed(), 2s);
}

TEST_F(CLISetDefault, QuestionIsSeenBeforeTheAnswer) {
    std::ostringstream out;
    std::ostringstream err;
    std::string atTheQuestion;
    fake.applications.setHandlerTakes = 1s;
    fake.mainLoop.after(500ms, [&] { atTheQuestion = out.str(); });
    CLI::run(kSet, fake.platform(), out, err);
    EXPECT_EQ(atTheQuestion,
              "asking the desktop to make com.hollowmere.ferrivane.desktop the default browser…\n");
}

TEST_F(CLISetDefault, SchemeThatIsInPlaceIsNotAskedFor) {
    fake.applications.handlers["http"] = own;
    EXPECT_EQ(seen(kSet).status, 0);
    EXPECT_EQ(fake.calls.of({"applications.setHandler"}),
              std::vector{"applications.setHandler https " + own.string()});
}

TEST_F(CLISetDefault, RefusalsAreShownByScheme) {
    for (const auto takes : {0s, 3s}) {
        SCOPED_TRACE(takes.count());
        fake.applications.handlers = {{"http", other}};
        fake.applications.setHandlerTakes = takes;
        fake.applications.refusals = {{"http", {"the person said no"}}, {"https", {"disk full"}}};
        EXPECT_EQ(
            seen(kSet),
            (Seen{
                "asking the desktop to make com.hollowmere.ferrivane.desktop the default browser…\n"
                "  http: the person said no\n"
                "  https: disk full\n"
                "  http: still other.desktop\n"
                "  https: still none\n",
                "", 1}));
    }
}

TEST_F(CLISetDefault, OneSchemeThatKeepsItsHandlerIsAFailure) {
    for (const std::string scheme : {"http", "https"}) {
        fake.applications.handlers = {{"http", other}, {"https", other}};
        fake.applications.deafSchemes = {scheme};
        const std::string http = scheme == "http" ? "still other.desktop" : "ok";
        const std::string https = scheme == "https" ? "still other.desktop" : "ok";
        std::string out =
            "asking the desktop to make com.hollowmere.ferrivane.desktop the default browser…\n";
        out.append("  http: ").append(http).append("\n  https: ").append(https).append("\n");
        EXPECT_EQ(seen(kSet), (Seen{out, "", 1}));
        EXPECT_EQ(requests().back(),
                  "applications.overridingSetting " + own.string() + " " + scheme);
    }
}

TEST_F(CLISetDefault, WhatIsReadBackCountsAndNotARefusal) {
    fake.applications.refusals = {{"http", {"too late"}}};
    fake.applications.setHandlerTakes = 1s;
    fake.mainLoop.after(500ms, [&] { fake.applications.handlers["http"] = own; });
    EXPECT_EQ(
        seen(kSet),
        (Seen{"asking the desktop to make com.hollowmere.ferrivane.desktop the default browser…\n"
              "  http: too late\n"
              "  http: ok\n"
              "  https: ok\n",
              "", 0}));
}

TEST_F(CLISetDefault, TargetWithoutAnIdentifierIsFineOnlyAmongItsLike) {
    const std::string asking = "asking the desktop to make nameless the default browser…\n";
    fake.applications.locations["nameless"] = "/apps/nameless";
    fake.applications.deafSchemes = {"http", "https"};
    const struct {
        const char* name;
        std::map<std::string, std::filesystem::path, std::less<>> handlers;
        std::string lines;
        int status;
    } rows[] = {
        {"itself",
         {{"http", "/apps/nameless"}, {"https", "/apps/nameless"}},
         "  http: ok\n  https: ok\n",
         0},
        {"no handler", {}, "  http: ok\n  https: ok\n", 0},
        {"one with an identifier",
         {{"http", other}},
         "  http: still other.desktop\n  https: ok\n",
         1},
    };
    for (const auto& row : rows) {
        fake.applications.handlers = row.handlers;
        EXPECT_EQ(seen(CLI::Commands::SetDefault{"nameless"}),
                  (Seen{asking + row.lines, "", row.status}))
            << row.name;
    }
}

TEST_F(CLISetDefault, HandlerWithoutAnIdentifierIsNotTheTarget) {
    fake.applications.deafSchemes = {"https"};
    fake.applications.handlers["https"] = "/apps/nameless";
    EXPECT_THAT(seen(kSet).out, ::testing::EndsWith("  http: ok\n  https: still nameless\n"));
}

TEST_F(CLISetDefault, SettingThatWinsIsNamedInOneLineOfItsOwn) {
    fake.applications.setting = "$BROWSER is set";
    EXPECT_EQ(seen(kSet).err, "Ferrivane: $BROWSER is set\n");
    EXPECT_EQ(seen(kSet).status, 0) << "both schemes are in place all the same";
    fake.applications.deafSchemes = {"http", "https"};
    const auto restored = seen(kRestore);
    EXPECT_EQ(restored.err, "Ferrivane: $BROWSER is set\n");
    EXPECT_EQ(restored.status, 1);
    EXPECT_EQ(requests().back(),
              "applications.overridingSetting " + chrome.string() + " http https");
}

TEST_F(CLISetDefault, NothingIsLogged) {
    std::filesystem::remove_all(Paths::logDirectory());
    fake.applications.refusals = {{"http", {"no"}}};
    seen(kSet);
    seen(kRestore);
    EXPECT_FALSE(std::filesystem::exists(Paths::logDirectory()));
    EXPECT_FALSE(std::filesystem::exists(Config::fileURL()));
    EXPECT_THAT(fake.calls.of({"browser.launch", "caller.", "dialogs.", "launchLock.",
                               "userInterface.", "session."}),
                IsEmpty());
}

}  // namespace
}  // namespace ferrivane
