// The entry by which the agent starts with the session.
#include <gmock/gmock.h>

#include "Ferrivane/linux/Autostart.h"
#include "Ferrivane/linux/DesktopEntry.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class AutostartTest : public ::testing::Test {
  protected:
    void set(bool starts, const std::filesystem::path& program = "/usr/bin/Ferrivane") const {
        EXPECT_TRUE(Autostart::set(file, program, starts));
    }
    void write(const std::string& text) const {
        std::filesystem::create_directories(file.parent_path());
        test::writeText(file, text);
    }
    bool isThere() const { return std::filesystem::exists(file); }

    const test::TempDir dir;
    const std::filesystem::path file = dir / "config/autostart/com.hollowmere.ferrivane.desktop";
};

TEST_F(AutostartTest, TheEntryStartsTheAgent) {
    set(true);
    EXPECT_EQ(test::readText(file),
              "[Desktop Entry]\nType=Application\nName=Ferrivane\nIcon=com.hollowmere.ferrivane\n"
              "TryExec=/usr/bin/Ferrivane\nExec=/usr/bin/Ferrivane --agent\nStartupNotify=false\n"
              "Terminal=false\n");
}

TEST_F(AutostartTest, SwitchingItOffRemovesIt) {
    set(false);
    EXPECT_FALSE(isThere());
    set(true);
    set(true);
    EXPECT_TRUE(isThere());
    set(false);
    EXPECT_FALSE(isThere());
}

TEST_F(AutostartTest, OddPathsArriveWhole) {
    for (const char* program : {"/a b/Ferrivane", "/a\"b/Ferrivane", "/a$b`c/Ferrivane",
                                "/100%/Ferrivane", "/50%u/Fer'ri&vane", "/ä/Ferrivane"}) {
        SCOPED_TRACE(program);
        set(true, program);
        const auto entry = DesktopEntry::read(file, "x");
        ASSERT_TRUE(entry);
        EXPECT_THAT(entry->command(), ElementsAre(program, "--agent"));
        set(false, program);
        EXPECT_FALSE(isThere());
    }
}

TEST_F(AutostartTest, APathThatNoEntryCanNameIsRefused) {
    for (const char* program : {"/a\nb/Ferrivane", "/a\\b/Ferrivane"}) {
        const auto set = Autostart::set(file, program, true);
        ASSERT_FALSE(set);
        EXPECT_EQ(set.error().code, EINVAL);
        EXPECT_FALSE(isThere());
    }
}

TEST_F(AutostartTest, OneOfAnotherInstallationFollowsThisOne) {
    set(true, "/old/Ferrivane");
    set(true, "/new/Ferrivane");
    EXPECT_THAT(test::readText(file), HasSubstr("\nExec=/new/Ferrivane --agent\n"));
    EXPECT_THAT(test::readText(file), Not(HasSubstr("/old/")));
    set(false, "/newest/Ferrivane");
    EXPECT_FALSE(isThere());
}

TEST_F(AutostartTest, CommentsAndOrderDoNotMakeItAnother) {
    write(
        "# mine\n[Desktop Entry]\n\n  Exec=/usr/bin/Ferrivane --agent \r\n"
        "TryExec=/usr/bin/Ferrivane\n#x=y\nStartupNotify=false\nTerminal=false\n"
        "Icon=com.hollowmere.ferrivane\nName=Ferrivane\nType=Application");
    set(false);
    EXPECT_FALSE(isThere());
}

TEST_F(AutostartTest, WhatThePersonChangedStays) {
    const std::string entry = Autostart::entry("/usr/bin/Ferrivane");
    const std::string otherCommand =
        "[Desktop Entry]\nType=Application\nName=Ferrivane\nIcon=com.hollowmere.ferrivane\n"
        "TryExec=/usr/bin/Ferrivane\nExec=env A=b /usr/bin/Ferrivane --agent\n"
        "StartupNotify=false\nTerminal=false\n";
    const std::string texts[] = {
        otherCommand,
        entry + "Hidden=true\n",
        entry + "X-GNOME-Autostart-enabled=false\n",
        entry + "OnlyShowIn=KDE;\n",
        entry + "Name[de]=Verteiler\n",
        entry + "[Desktop Action x]\n",
        "[Desktop Entry]\nType=Application\nHidden=true\n",
        Autostart::entry("/usr/bin/Other"),
        "",
        "\n \n",
        "nonsense",
        "TryExec=",
        std::string("TryExec=/usr/bin/Ferrivane\0", 26),
        "\xFF",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        write(text);
        set(false);
        EXPECT_EQ(test::readText(file), text);
        set(true);
        EXPECT_EQ(test::readText(file), text);
    }
}

TEST_F(AutostartTest, WhatIsNoFileStays) {
    std::filesystem::create_directories(file);
    set(true);
    set(false);
    EXPECT_TRUE(std::filesystem::is_directory(file));
}

TEST_F(AutostartTest, ALinkIntoAFolderOfDotfilesStaysAsLongAsItStarts) {
    const auto target = dir / "dotfiles/ferrivane.desktop";
    std::filesystem::create_directory(target.parent_path());
    test::writeText(target, Autostart::entry("/old/Ferrivane"));
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink(target, file);
    set(true);
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_EQ(test::readText(target), Autostart::entry("/usr/bin/Ferrivane"));
    set(false);
    EXPECT_FALSE(std::filesystem::is_symlink(file));
}

TEST_F(AutostartTest, AFolderThatCannotBeMadeIsAnError) {
    test::writeText(dir / "config", "");
    EXPECT_FALSE(Autostart::set(file, "/usr/bin/Ferrivane", true));
    EXPECT_TRUE(Autostart::set(file, "/usr/bin/Ferrivane", false));
}

}  // namespace
}  // namespace ferrivane
