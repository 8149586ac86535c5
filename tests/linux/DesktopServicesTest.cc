// What the module of the desktop's libraries does, besides the bus and windows.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/support/ReadFile.h"
#include "tests/linux/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::outputOf;
using test::Variables;

class DesktopServicesTest : public ::testing::Test {
  protected:
    std::string ask(const std::vector<std::string>& question) const {
        std::vector<std::string> command{ADAPTER_PROBE};
        command.insert(command.end(), question.begin(), question.end());
        return outputOf(command, {{"HOME", dir.path().string()},
                                  {"XDG_CONFIG_HOME", (dir / "config").string()},
                                  {"XDG_DATA_HOME", (dir / "data").string()},
                                  {"XDG_DATA_DIRS", (dir / "no-data").string()},
                                  {"XDG_CACHE_HOME", (dir / "cache").string()},
                                  {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
                                  {"DISPLAY", std::nullopt}});
    }

    const test::TempDir dir;
    const std::filesystem::path preferences = dir / "config/ferrivane/preferences.ini";
};

TEST_F(DesktopServicesTest, OurTimersAndChildrenInTheLibrarysLoop) {
    EXPECT_EQ(ask({"loop"}), "child 1, timer\n");
}

TEST_F(DesktopServicesTest, APreferenceIsFalseUntilItIsSet) {
    EXPECT_EQ(ask({"flag", "showMenuBarIcon"}), "not set\n");
    EXPECT_EQ(ask({"set-flag", "showMenuBarIcon"}), "done\n");
    EXPECT_EQ(ask({"flag", "showMenuBarIcon"}), "set\n");
    EXPECT_EQ(ask({"flag", "another"}), "not set\n");
}

TEST_F(DesktopServicesTest, APreferenceThatIsSetLeavesTheOthers) {
    std::filesystem::create_directories(preferences.parent_path());
    test::writeText(preferences, "# mine\n[Preferences]\nother=true\n\n[Group]\nkey=value\n");
    ask({"set-flag", "showMenuBarIcon"});
    const std::string text = test::readText(preferences);
    for (const char* kept : {"# mine\n", "other=true\n", "[Group]\nkey=value\n"}) {
        EXPECT_NE(text.find(kept), std::string::npos) << text;
    }
}

TEST_F(DesktopServicesTest, PreferencesThatAreNoneCountAsUnset) {
    std::filesystem::create_directories(preferences.parent_path());
    for (const char* text : {"nonsense", "[Preferences]\nshowMenuBarIcon=perhaps\n", "\xFF"}) {
        test::writeText(preferences, text);
        EXPECT_EQ(ask({"flag", "showMenuBarIcon"}), "not set\n") << text;
    }
}

TEST_F(DesktopServicesTest, PreferencesAreForTheirOwnerAlone) {
    const mode_t before = ::umask(0);
    EXPECT_EQ(ask({"set-flag", "showMenuBarIcon"}), "done\n");
    ::umask(before);
    EXPECT_EQ(test::modeOf(preferences), 0600U);
    EXPECT_EQ(test::modeOf(preferences.parent_path()), 0700U);
}

// The dotfiles of many are links into one folder.
TEST_F(DesktopServicesTest, PreferencesBehindALinkStayThere) {
    std::filesystem::create_directories(preferences.parent_path());
    std::filesystem::create_symlink("elsewhere", preferences);
    ask({"set-flag", "showMenuBarIcon"});
    EXPECT_TRUE(std::filesystem::is_symlink(preferences));
    EXPECT_EQ(ask({"flag", "showMenuBarIcon"}), "set\n");
}

TEST_F(DesktopServicesTest, APipeInPlaceOfThePreferencesIsNotWaitedFor) {
    std::filesystem::create_directories(preferences.parent_path());
    ASSERT_EQ(::mkfifo(preferences.c_str(), 0600), 0);
    EXPECT_EQ(ask({"flag", "showMenuBarIcon"}), "not set\n");
}

TEST_F(DesktopServicesTest, PreferencesThatCannotBeReadAreNotReplaced) {
    std::filesystem::create_directories(preferences.parent_path());
    test::writeText(preferences, "[Preferences]\nother=true\n");
    const auto tooLarge = kLargestReadableFile + 1;
    std::filesystem::resize_file(preferences, tooLarge);
    ask({"set-flag", "showMenuBarIcon"});
    EXPECT_EQ(std::filesystem::file_size(preferences), tooLarge);
}

TEST_F(DesktopServicesTest, ADocumentOpensInThePersonsApplicationForIt) {
    const auto file = dir / "a b.txt";
    test::writeText(file, "text\n");
    EXPECT_NE(ask({"open", file}), "opened\n") << "there is no application";
    const auto seen = dir / "seen";
    const auto editor = test::writeScript(
        dir / "editor", "#!/bin/sh\nprintf '%s\\n' \"$@\" >'" + seen.string() + ".part'\nmv '" +
                            seen.string() + ".part' '" + seen.string() + "'\n");
    std::filesystem::create_directories(dir / "data/applications");
    test::writeText(dir / "data/applications/editor.desktop",
                    "[Desktop Entry]\nType=Application\nName=Editor\nExec=" + editor.string() +
                        " %f\nMimeType=text/plain;application/octet-stream;\n");
    test::writeText(dir / "data/applications/mimeinfo.cache",
                    "[MIME Cache]\ntext/plain=editor.desktop;\n"
                    "application/octet-stream=editor.desktop;\n");
    EXPECT_EQ(ask({"open", file}), "opened\n");
    ASSERT_TRUE(test::waitUntil([&] { return std::filesystem::exists(seen); }));
    EXPECT_EQ(test::readText(seen), file.string() + "\n");
}

}  // namespace
}  // namespace ferrivane
