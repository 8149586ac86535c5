// The dry run: where would this link go?
#include <gmock/gmock.h>

#include "tests/app/CLITest.h"

namespace ferrivane {
namespace {

using DryRun = CLI::Commands::Test;
using ::testing::ElementsAre;

class CLITestCommand : public test::CLITest {
  protected:
    CLITestCommand() {
        writeOwnRules("{}");
        writeCatalogue({{"Default", "Home", {}, {}}, {"Profile 2", "Work", "me@work.example", {}}});
    }

    // The command's lines; empty when it failed.
    std::vector<std::string> linesOf(const DryRun& command) {
        const Seen all = seen(command);
        EXPECT_EQ(all.err, "");
        EXPECT_EQ(all.status, 0);
        std::vector<std::string> lines;
        std::istringstream text(all.out);
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }
};

TEST_F(CLITestCommand, NoRuleMatches) {
    EXPECT_EQ(seen(DryRun{"https://a/secret", {}}),
              (Seen{"URL:      https://a/secret\n"
                    "Opener:   none\n"
                    "Rule:     none matched → default \"Default\"\n"
                    "Profile:  Home [Default]\n"
                    "Command:  /opt/chrome/chrome --profile-directory=Default https://a/secret\n",
                    "", 0}));
}

TEST_F(CLITestCommand, RuleThatMatchesIsShownAsItStandsInTheFile) {
    writeOwnRules(R"({"rules": [
        {"kind": "host", "match": "other.example", "profile": "Home"},
        {"kind": "host", "match": " work.example ", "profile": "ME@WORK.example",
         "comment": "the office"}]})");
    EXPECT_THAT(
        linesOf(DryRun{"https://x.work.example/", {}}),
        ElementsAre("URL:      https://x.work.example/", "Opener:   none",
                    "Rule:     #2 host \" work.example \" → ME@WORK.example   // the office",
                    "Profile:  Work [Profile 2] me@work.example",
                    "Command:  /opt/chrome/chrome \"--profile-directory=Profile 2\" "
                    "https://x.work.example/"));
}

TEST_F(CLITestCommand, RuleWithoutACommentEndsWithItsProfile) {
    writeOwnRules(R"({"rules": [{"kind": "url", "match": "a", "profile": "Home"}]})");
    EXPECT_EQ(linesOf(DryRun{"https://a/", {}}).at(2), "Rule:     #1 url \"a\" → Home");
    writeOwnRules(
        R"({"rules": [{"kind": "url", "match": "a", "profile": "Home", "comment": ""}]})");
    EXPECT_EQ(linesOf(DryRun{"https://a/", {}}).at(2), "Rule:     #1 url \"a\" → Home   // ");
}

TEST_F(CLITestCommand, SenderMatchesByIdNameOrPartOfItsPath) {
    writeOwnRules(R"({"rules": [{"kind": "app", "match": "mail", "profile": "Work"}]})");
    const struct {
        const char* from;
        const char* rule;
    } rows[] = {
        {"Mail", "Rule:     #1 app \"mail\" → Work"},
        {"/opt/mail/bin", "Rule:     #1 app \"mail\" → Work"},
        {"Chat", "Rule:     none matched → default \"Default\""},
        {"", "Rule:     none matched → default \"Default\""},
    };
    for (const auto& row : rows) {
        const auto lines = linesOf(DryRun{"https://a/", row.from});
        EXPECT_EQ(lines.at(1), std::string("Opener:   ") + row.from);
        EXPECT_EQ(lines.at(2), row.rule) << row.from;
    }
}

TEST_F(CLITestCommand, UnknownProfileIsNotAskedFor) {
    writeOwnRules(R"({"defaultProfile": "Gone \"x\""})");
    EXPECT_THAT(linesOf(DryRun{"https://a/", {}}),
                ElementsAre("URL:      https://a/", "Opener:   none",
                            "Rule:     none matched → default \"Gone \"x\"\"",
                            "Profile:  \"Gone \"x\"\" NOT FOUND in Chrome; would open without "
                            "--profile-directory",
                            "Command:  /opt/chrome/chrome https://a/"));
}

TEST_F(CLITestCommand, WithoutACatalogueNoProfileIsFoundAndNothingIsSaidOfIt) {
    std::filesystem::remove(userData / "Local State");
    EXPECT_THAT(linesOf(DryRun{"https://a/", {}}),
                ElementsAre("URL:      https://a/", "Opener:   none",
                            "Rule:     none matched → default \"Default\"",
                            "Profile:  \"Default\" NOT FOUND in Chrome; would open without "
                            "--profile-directory",
                            "Command:  /opt/chrome/chrome https://a/"));
}

TEST_F(CLITestCommand, CommandIsWhatTheLauncherWouldStart) {
    const struct {
        const char* name;
        std::function<void()> arrange;
        const char* url;
        const char* line;
    } rows[] = {
        {"a link with blanks", [] {}, "https://a/ b c",
         "Command:  /opt/chrome/chrome --profile-directory=Default \"https://a/ b c\""},
        {"other white space and quotes stay", [] {}, "https://a/\t\"x\"",
         "Command:  /opt/chrome/chrome --profile-directory=Default https://a/\t\"x\""},
        {"an executable with blanks",
         [&] { fake.applications.executables.begin()->second = "/opt/Google Chrome/chrome"; },
         "https://a/",
         "Command:  \"/opt/Google Chrome/chrome\" --profile-directory=Default https://a/"},
        {"no executable", [&] { fake.applications.executables.clear(); }, "https://a/",
         "Command:  /apps/google-chrome.desktop --profile-directory=Default https://a/"},
        {"no Chrome", [&] { fake.applications.locations.clear(); }, "https://a/",
         "Command:  <Chrome not found> --profile-directory=Default https://a/"},
    };
    for (const auto& row : rows) {
        row.arrange();
        EXPECT_EQ(linesOf(DryRun{row.url, {}}).at(4), row.line) << row.name;
    }
}

TEST_F(CLITestCommand, LinkIsShownByteForByte) {
    for (const char* url : {"https://a/\xFF\xC3(", "https://a/\u202E\u2066", "--status", "x"}) {
        EXPECT_EQ(linesOf(DryRun{url, {}}).at(0), std::string("URL:      ") + url);
    }
    EXPECT_THAT(seen(DryRun{"https://a/\nb", {}}).out,
                ::testing::StartsWith("URL:      https://a/\nb\nOpener: "));
}

TEST_F(CLITestCommand, UnreadableRulesAreAnErrorWithoutDefaults) {
    const struct {
        const char* name;
        const char* json;  // null: no file
        const char* reason;
    } rows[] = {
        {"missing", nullptr, "open failed: No such file or directory"},
        {"forgotten comma", "{\n  \"defaultProfile\": \"A\"\n  \"rules\": []\n}",
         "line 3, column 9: syntax error while parsing object - unexpected string literal; "
         "expected '}'"},
        {"a kind that does not exist",
         "{\"rules\": [\n{\"kind\": \"url\", \"match\": \"\", \"profile\": \"\"},\n"
         "{\"kind\": \"Host\", \"match\": \"\", \"profile\": \"\"}]}",
         "line 3: rules[1].kind: \"Host\" is not one of url, host, app"},
    };
    for (const auto& row : rows) {
        std::filesystem::remove(Config::fileURL());
        if (row.json != nullptr) writeOwnRules(row.json);
        EXPECT_EQ(seen(DryRun{"https://a/", {}}),
                  (Seen{"cannot read " + rulesPath() + ": " + row.reason + "\n", "", 1}))
            << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
