#include <gmock/gmock.h>

#include "tests/app/CLITest.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CLIStatus : public test::CLITest {
  protected:
    // The report's line that begins with `label`, without it.
    std::string valueOf(const std::string& label) {
        const std::string text = "\n" + seen(CLI::Commands::Status{}).out;
        const std::size_t start = text.find("\n" + label);
        if (start == std::string::npos) return "no such line";
        const std::size_t value = start + 1 + label.size();
        return text.substr(value, text.find('\n', value) - value);
    }

    // What follows the line "Profiles:".
    std::string profiles() {
        const std::string text = seen(CLI::Commands::Status{}).out;
        const std::string title = "\nProfiles:\n";
        const std::size_t start = text.find(title);
        return start == std::string::npos ? "no list" : text.substr(start + title.size());
    }
};

TEST_F(CLIStatus, WithNothingInstalledSaysSo) {
    fake.applications.locations.clear();
    EXPECT_EQ(seen(CLI::Commands::Status{}),
              (Seen{"Ferrivane dev (unbundled binary)\n"
                    "Sandbox:  no\n"
                    "Config:   " +
                        rulesPath() +
                        "  (missing; created on first run)\n"
                        "Log:      " +
                        logPath() +
                        "\n"
                        "Agent:    not running\n"
                        "Default browser: none\n"
                        "Chrome:   NOT FOUND\n"
                        "Profiles: cannot read (open failed: No such file or directory)\n",
                    "", 0}));
}

TEST_F(CLIStatus, WithEverythingInPlaceSaysWhere) {
    writeOwnRules("{}");
    writeCatalogue(
        {{"Default", "Home", {}, {}}, {"Profile 2", "Work", "me@work.example", "work.example"}});
    fake.applications.bundle = {"com.hollowmere.ferrivane", "1.2.3"};
    fake.applications.processes["com.hollowmere.ferrivane"] = {11};
    fake.applications.handlers.emplace("https", "/apps/com.hollowmere.ferrivane.desktop");
    fake.applications.handlers.emplace("http", "/apps/other.desktop");
    fake.browser.process = 42;
    EXPECT_EQ(seen(CLI::Commands::Status{}),
              (Seen{"Ferrivane 1.2.3\n"
                    "Sandbox:  no\n"
                    "Config:   " +
                        rulesPath() +
                        "\n"
                        "Log:      " +
                        logPath() +
                        "\n"
                        "Agent:    running (pid 11)\n"
                        "Default browser: /apps/com.hollowmere.ferrivane.desktop\n"
                        "Chrome:   /apps/google-chrome.desktop (running)\n"
                        "Profiles:\n"
                        "  Home         [Default]\n"
                        "  Work         [Profile 2]  me@work.example, managed by work.example\n",
                    "", 0}));
}

TEST_F(CLIStatus, ChromeThatDoesNotRun) {
    EXPECT_EQ(valueOf("Chrome:"), "   /apps/google-chrome.desktop (not running)");
}

TEST_F(CLIStatus, EveryAgentIsListed) {
    fake.applications.processes["com.hollowmere.ferrivane"] = {11, 7, 300};
    EXPECT_EQ(valueOf("Agent:"), "    running (pid 11, 7, 300)");
}

TEST_F(CLIStatus, RulesThatAreBrokenAreThereAllTheSame) {
    writeOwnRules("nonsense");
    EXPECT_EQ(valueOf("Config:"), "   " + rulesPath());
}

TEST_F(CLIStatus, RulesLinkThatLeadsNowhereIsMissing) {
    std::filesystem::create_symlink("nowhere", Config::fileURL());
    EXPECT_EQ(valueOf("Config:"), "   " + rulesPath() + "  (missing; created on first run)");
}

TEST_F(CLIStatus, UnreadableCatalogueIsReportedInOneLine) {
    const std::string path = (userData / "Local State").string();
    EXPECT_EQ(valueOf("Profiles:"), " cannot read (open failed: No such file or directory)");
    writeLocalState("[]");
    EXPECT_EQ(valueOf("Profiles:"), " cannot read (no profile.info_cache in " + path + ")");
    writeLocalState("{");
    EXPECT_THAT(valueOf("Profiles:"), ::testing::StartsWith(" cannot read (not JSON: "));
}

TEST_F(CLIStatus, EmptyCatalogueIsATitleAlone) {
    writeCatalogue({});
    EXPECT_EQ(profiles(), "");
}

TEST_F(CLIStatus, ProfilesAreListedByDirectoryWithWhatIsKnownOfThem) {
    writeCatalogue({{"Profile 2", "No more", {}, {}},
                    {"Profile 10", "Mail", "a@b.example", {}},
                    {"Default", "Domain", {}, "b.example"},
                    {"Profile 3", "Both", "a@b.example", "b.example"}});
    EXPECT_EQ(profiles(),
              "  Domain       [Default]  managed by b.example\n"
              "  Mail         [Profile 10]  a@b.example\n"
              "  No more      [Profile 2]\n"
              "  Both         [Profile 3]  a@b.example, managed by b.example\n");
}

TEST_F(CLIStatus, NamesArePaddedOrCutToTwelveCharactersAsAPersonCounts) {
    const struct {
        const char* name;
        std::string profile;
        std::string shown;
    } rows[] = {
        {"one character", "x", "x           "},
        {"eleven", "12345678901", "12345678901 "},
        {"twelve", "123456789012", "123456789012"},
        {"thirteen", "1234567890123", "123456789012"},
        {"much more", std::string(1000, 'x'), std::string(12, 'x')},
        {"letters beyond ASCII", "Größe", "Größe       "},
        {"letters beyond ASCII, cut", "ÄÖÜäöüßÄÖÜäöü", "ÄÖÜäöüßÄÖÜäö"},
        {"combining marks", "e\u0301e\u0301", "e\u0301e\u0301          "},
        {"a combining mark at the cut", "12345678901e\u03013", "12345678901e\u0301"},
        {"an emoji with joiners", "\U0001F469\u200D\U0001F469\u200D\U0001F467",
         "\U0001F469\u200D\U0001F469\u200D\U0001F467           "},
        {"an emoji with joiners at the cut",
         "12345678901\U0001F469\u200D\U0001F469\u200D\U0001F467x",
         "12345678901\U0001F469\u200D\U0001F469\u200D\U0001F467"},
        {"flags", "\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7",
         "\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7          "},
        {"a skin tone", "\U0001F44D\U0001F3FD", "\U0001F44D\U0001F3FD           "},
        {"wide letters count as one", "日本語", "日本語         "},
    };
    for (const auto& row : rows) {
        writeCatalogue({{"Default", row.profile, {}, {}}});
        EXPECT_EQ(profiles(), "  " + row.shown + " [Default]\n") << row.name;
    }
}

TEST_F(CLIStatus, InASandboxChromeAndItsProfilesAreReachedByTheScript) {
    writeCatalogue({{"Default", "Out of reach", {}, {}}});
    fake.isSandboxed = true;
    fake.scripts.folder = dir / "scripts";
    const std::string script = (dir / "scripts/ferrivane-helper.sh").string();
    EXPECT_EQ(valueOf("Sandbox:"), "  yes — Chrome reached through the helper script");
    EXPECT_EQ(valueOf("Profiles:"),
              " cannot read (helper script is not installed at " + script + ")");
    fake.desktop = Desktop::macOS;
    EXPECT_EQ(valueOf("Sandbox:"), "  yes — Chrome reached through Launch Services");

    std::filesystem::create_directory(dir / "scripts");
    test::writeText(script, "");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    fake.scripts.temporary = dir / "scripts";
    fake.scripts.whenRun = [](const std::vector<std::string>& words) {
        test::writeText(words.at(1), R"({"profile":{"info_cache":{"P":{"name":"Copied"}}}})");
    };
    EXPECT_EQ(profiles(), "  Copied       [P]\n");
    EXPECT_EQ(test::namesIn(dir / "scripts"), std::vector<std::string>{"ferrivane-helper.sh"});
    fake.scripts.ran = std::unexpected(PlatformError{"the helper script ended with status 1"});
    EXPECT_EQ(valueOf("Profiles:"), " cannot read (the helper script ended with status 1)");
}

TEST_F(CLIStatus, AsksTheDesktopAndStartsNothing) {
    seen(CLI::Commands::Status{});
    EXPECT_THAT(fake.calls.of({"applications.running", "applications.handler", "browser."}),
                ElementsAre("applications.running com.hollowmere.ferrivane",
                            "applications.handler https", "browser.running"));
    EXPECT_THAT(fake.calls.of({"browser.launch", "caller.", "frontmost."}), IsEmpty());
}

}  // namespace
}  // namespace ferrivane
