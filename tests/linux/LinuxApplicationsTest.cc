#include <gtest/gtest.h>
#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/linux/LinuxApplications.h"
#include "Ferrivane/linux/Modules.h"
#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using Path = std::optional<std::filesystem::path>;

class LinuxApplicationsTest : public ::testing::Test {
  protected:
    LinuxApplicationsTest() { test::writeScript(chat, ""); }

    const test::TempDir dir;
    const std::filesystem::path folder = dir / "data/applications";
    const std::filesystem::path chat = dir / "chat";
    const DesktopEntries entries{{folder}};
    std::optional<ChromeLocation> chrome;
    const LinuxApplications applications{entries, chrome};
};

TEST_F(LinuxApplicationsTest, LocationAndExecutable) {
    const auto entry = test::writeEntry(folder / "org.example.Chat.desktop", "Chat", chat);
    const auto broken = test::writeEntry(folder / "broken.desktop", "Broken", "/nowhere/x");
    EXPECT_EQ(applications.location("org.example.Chat"), entry);
    EXPECT_EQ(applications.location("org.example.Other"), Path());
    EXPECT_EQ(applications.executable(entry), chat);
    EXPECT_EQ(applications.executable(broken), Path());
    EXPECT_EQ(applications.executable(folder / "missing.desktop"), Path());
    EXPECT_EQ(applications.executable(""), Path());
}

TEST_F(LinuxApplicationsTest, ChromesIdentifierStandsForTheLocatedBrowser) {
    // Another copy under the very identifier does not count, be it there or not.
    test::writeEntry(folder / "com.google.Chrome.desktop", "Chrome", chat);
    EXPECT_EQ(applications.location(ChromeLauncher::chromeBundleIdentifier), Path());
    const auto entry = test::writeEntry(folder / "chromium.desktop", "Chromium", "/nowhere/x");
    chrome = ChromeLocation{.entry = entry,
                            .executable = chat,
                            .command = {},
                            .userDataDirectory = {},
                            .processNames = {}};
    EXPECT_EQ(applications.location(ChromeLauncher::chromeBundleIdentifier), entry);
    EXPECT_EQ(applications.executable(entry), chat);
}

TEST_F(LinuxApplicationsTest, TheOwnBundle) {
    const std::string own = Processes::executable(::getpid())->string();
    const std::string id(AppInfo::bundleIdentifier);
    std::filesystem::create_symlink(own, dir / "link");
    const struct {
        const char* name;
        std::string lines;
        std::optional<std::string> identifier;
    } rows[] = {
        {"an entry that starts it", "Exec=" + own + " %U", id},
        {"an entry that starts it by a link", "Exec=" + (dir / "link").string(), id},
        {"an entry behind an assignment", "Exec=env A=b " + own, id},
        {"an entry of another program", "Exec=" + chat.string(), std::nullopt},
        {"an entry of no program", "Exec=/nowhere/Ferrivane", std::nullopt},
        {"an entry that is not shown", "NoDisplay=true\nExec=" + own, std::nullopt},
        {"an entry that was deleted", "Hidden=true\nExec=" + own, std::nullopt},
        {"an entry without a program", "", std::nullopt},
    };
    EXPECT_EQ(applications.ownBundle().identifier, std::nullopt) << "no entry";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        test::writeEntry(folder / (id + ".desktop"), row.lines);
        EXPECT_EQ(applications.ownBundle().identifier, row.identifier);
        EXPECT_EQ(applications.ownBundle().location,
                  row.identifier ? folder / (id + ".desktop") : std::filesystem::path());
        EXPECT_TRUE(applications.ownBundle().version);
    }
}

// By the desktop's own library, in a process of its own, which reads the folders anew.
TEST_F(LinuxApplicationsTest, TheHandlerOfAScheme) {
    const auto one = test::writeEntry(folder / "one.desktop", "One", chat.string() + " %u",
                                      "MimeType=x-scheme-handler/https;");
    const auto two = test::writeEntry(folder / "two.desktop", "Two", chat.string() + " %u",
                                      "MimeType=x-scheme-handler/https;x-scheme-handler/http;");
    test::writeEntry(folder / "gone.desktop", "Gone", "/nowhere/x %u");
    std::filesystem::create_directory(dir / "config");
    const test::Variables variables{{"XDG_DATA_HOME", dir / "data"},
                                    {"XDG_CONFIG_HOME", dir / "config"},
                                    {"XDG_DATA_DIRS", dir / "nothing"}};
    const struct {
        const char* name;
        const char* defaults;  // lines of mimeapps.list
        const char* scheme;
        std::string handler;
    } rows[] = {
        {"no default and no candidate", "", "gopher", "nothing"},
        {"the default", "x-scheme-handler/https=two.desktop", "https", two},
        {"another scheme's",
         "x-scheme-handler/https=one.desktop\nx-scheme-handler/http=two.desktop", "http", two},
        {"the first of several", "x-scheme-handler/https=one.desktop;two.desktop;", "https", one},
        {"one without its program is passed over",
         "x-scheme-handler/https=gone.desktop;two.desktop;", "https", two},
        {"one that is not installed is passed over",
         "x-scheme-handler/https=unknown.desktop;one.desktop;", "https", one},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        test::writeText(dir / "config/mimeapps.list",
                        std::string("[Default Applications]\n") + row.defaults + "\n");
        EXPECT_EQ(test::outputOf({ADAPTER_PROBE, "handler", row.scheme}, variables),
                  row.handler + "\n");
    }
}

TEST_F(LinuxApplicationsTest, TheIdentifierIsThatOfTheEntry) {
    const auto entry = test::writeEntry(folder / "org.example.Chat.desktop", "Chat", chat);
    const auto below = test::writeEntry(folder / "vendor/sub/chat.desktop", "Chat", chat);
    const auto elsewhere = test::writeEntry(dir / "elsewhere/chat.desktop", "Chat", chat);
    EXPECT_EQ(applications.identifier(entry), "org.example.Chat");
    EXPECT_EQ(applications.identifier(below), "vendor-sub-chat");
    EXPECT_EQ(applications.location("vendor-sub-chat"), below);
    for (const auto& file : {elsewhere, folder / "missing.desktop", folder / "vendor", folder, chat,
                             std::filesystem::path()}) {
        EXPECT_EQ(applications.identifier(file), std::nullopt) << file;
    }
}

// Each request in a process of its own, as a command is.
TEST_F(LinuxApplicationsTest, AnEntryBecomesTheHandlerOfAScheme) {
    const std::string exec = chat.string() + " %u";
    const auto one = test::writeEntry(folder / "one.desktop", "One", exec);
    const auto below = test::writeEntry(folder / "vendor/two.desktop", "Two", exec);
    const auto broken = test::writeEntry(folder / "broken.desktop", "Broken", "/nowhere/x %u");
    const auto elsewhere = test::writeEntry(dir / "elsewhere/chat.desktop", "Chat", exec);
    const test::Variables variables{{"XDG_DATA_HOME", dir / "data"},
                                    {"XDG_CONFIG_HOME", dir / "config"},
                                    {"XDG_DATA_DIRS", dir / "nothing"}};
    const auto asked = [&](const std::string& question, const std::string& scheme,
                           const std::filesystem::path& entry = {}) {
        return test::outputOf({ADAPTER_PROBE, question, scheme, entry}, variables);
    };
    EXPECT_EQ(asked("set", "https", one), "accepted\n");
    EXPECT_EQ(asked("handler", "https"), one.string() + "\n");
    EXPECT_EQ(asked("handler", "http"), "nothing\n");
    EXPECT_EQ(asked("set", "http", below), "accepted\n");
    EXPECT_EQ(asked("handler", "http"), below.string() + "\n");
    EXPECT_EQ(asked("handler", "https"), one.string() + "\n");
    EXPECT_EQ(asked("set", "https", broken), "the desktop knows no usable broken.desktop\n");
    EXPECT_EQ(asked("set", "https", elsewhere), "no installed desktop entry\n");
    EXPECT_EQ(asked("set", "https", folder / "missing.desktop"), "no installed desktop entry\n");
    EXPECT_EQ(asked("handler", "https"), one.string() + "\n");
}

TEST_F(LinuxApplicationsTest, TheSettingThatKeepsTheOldHandler) {
    const std::string exec = chat.string() + " %u";
    const auto one = test::writeEntry(folder / "one.desktop", "One", exec);
    test::writeEntry(folder / "two.desktop", "Two", exec);
    const auto list = dir / "config/one-mimeapps.list";
    std::filesystem::create_directory(dir / "config");
    test::writeText(list, "[Default Applications]\nx-scheme-handler/https=two.desktop;\n");
    const auto setting = [&](const char* scheme, const char* desktops) {
        return test::outputOf({ADAPTER_PROBE, "setting", scheme, one},
                              {{"XDG_DATA_HOME", dir / "data"},
                               {"XDG_CONFIG_HOME", dir / "config"},
                               {"XDG_DATA_DIRS", dir / "nothing"},
                               {"BROWSER", std::nullopt},
                               {"XDG_CURRENT_DESKTOP", desktops}});
    };
    const std::string named = list.string() +
                              " counts before mimeapps.list; change or remove "
                              "x-scheme-handler/https in its group [Default Applications]\n";
    EXPECT_EQ(setting("https", "ONE"), named);
    EXPECT_EQ(setting("https", "Other::One"), named);
    EXPECT_EQ(setting("https", "Other"), "nothing\n");
    EXPECT_EQ(setting("https", ""), "nothing\n");
    EXPECT_EQ(setting("http", "ONE"), "nothing\n");
    test::writeText(list, "x-scheme-handler/https=two.desktop");
    EXPECT_EQ(setting("https", "ONE"), "nothing\n");
}

TEST_F(LinuxApplicationsTest, WithoutItsModuleTheDesktopTellsNothing) {
    const std::string alone = test::copyProgram(ADAPTER_PROBE, dir / "alone/probe");
    for (const auto& [question, answer] :
         {std::pair("handler", "nothing\n"), std::pair("owner", "nobody\n"),
          std::pair("front", "unknown\n"), std::pair("scope", "no module\n")}) {
        EXPECT_EQ(test::outputOf({"sh", "-c", "\"$@\" 2>&1", "sh", alone, question, "1"},
                                 {{"DISPLAY", ":65000"}}),
                  "Ferrivane: cannot load " + Modules::desktop() + ": not installed\n" + answer);
    }
}

}  // namespace
}  // namespace ferrivane
