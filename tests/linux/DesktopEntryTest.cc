#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Ferrivane/linux/DesktopEntry.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::ScopedVariable;
using Words = std::vector<std::string>;

class DesktopEntryTest : public ::testing::Test {
  protected:
    std::optional<DesktopEntry> read(const std::string& text) const {
        test::writeText(file, text);
        return DesktopEntry::read(file, "id");
    }
    std::optional<DesktopEntry> readLines(const std::string& lines) const {
        test::writeEntry(file, lines);
        return DesktopEntry::read(file, "id");
    }

    const test::TempDir dir;
    const std::filesystem::path file = dir / "entry.desktop";
};

TEST_F(DesktopEntryTest, WhatTheFileSays) {
    const auto entry = readLines("Name=Chat\nExec=chat %U");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->id, "id");
    EXPECT_EQ(entry->file, file);
    EXPECT_EQ(entry->name, "Chat");
    EXPECT_EQ(entry->exec, (Words{"chat", "%U"}));
    EXPECT_TRUE(entry->isVisible);
    EXPECT_FALSE(entry->isHidden);
    EXPECT_FALSE(entry->isFlatpak);
}

TEST_F(DesktopEntryTest, Layout) {
    const struct {
        const char* name;
        std::string text;
        const char* entryName;  // "-": no entry
    } rows[] = {
        {"no file contents at all", "", "-"},
        {"no type", "[Desktop Entry]\nName=Chat\n", "-"},
        {"a link", "[Desktop Entry]\nType=Link\nName=Chat\n", "-"},
        {"a folder of the menu", "[Desktop Entry]\nType=Directory\nName=Chat\n", "-"},
        {"keys outside the group", "Type=Application\nName=Chat\n", "-"},
        {"keys in other groups",
         "[Other]\nName=X\n[Desktop Entry]\nType=Application\nName=Chat\n"
         "[Desktop Action new]\nName=New\nType=Link\n",
         "Chat"},
        {"comments and blank lines",
         "# one\n\n[Desktop Entry]\n#Name=X\n\nType=Application\n"
         "  # two\nName=Chat\n",
         "Chat"},
        {"blanks around everything", "[Desktop Entry]\n Type = Application\n\tName\t=\tChat \n",
         "Chat"},
        {"line ends of another system", "[Desktop Entry]\r\nType=Application\r\nName=Chat\r\n",
         "Chat"},
        {"no line end at the end", "[Desktop Entry]\nType=Application\nName=Chat", "Chat"},
        {"the last of two lines counts", "[Desktop Entry]\nType=Application\nName=X\nName=Chat\n",
         "Chat"},
        {"a line that is no key", "[Desktop Entry]\nType=Application\nnonsense\nName=Chat\n",
         "Chat"},
        {"a key like the one we look for",
         "[Desktop Entry]\nType=Application\nName=Chat\nNameX=X\nGenericName=Y\nName[=Z\n", "Chat"},
        {"an equals sign in the value", "[Desktop Entry]\nType=Application\nName=a=b\n", "a=b"},
        {"an empty name", "[Desktop Entry]\nType=Application\nName=\n", ""},
        {"no name", "[Desktop Entry]\nType=Application\nExec=chat\n", ""},
        {"escapes", "[Desktop Entry]\nType=Application\nName=a\\sb\\tc\\nd\\re\\\\f\\gh\\\n",
         "a b\tc\nd\re\\f\\gh\\"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = read(row.text);
        EXPECT_EQ(entry ? entry->name : "-", row.entryName);
    }
}

TEST_F(DesktopEntryTest, NothingToRead) {
    EXPECT_FALSE(DesktopEntry::read(dir / "missing.desktop", "id"));
    EXPECT_FALSE(DesktopEntry::read(dir.path(), "id"));
    std::filesystem::create_symlink("nowhere", dir / "dangling.desktop");
    EXPECT_FALSE(DesktopEntry::read(dir / "dangling.desktop", "id"));
    ASSERT_EQ(::mkfifo((dir / "pipe.desktop").c_str(), 0600), 0);
    EXPECT_FALSE(DesktopEntry::read(dir / "pipe.desktop", "id"));
}

TEST_F(DesktopEntryTest, Visibility) {
    const struct {
        const char* name;
        const char* lines;
        bool isVisible;
        bool isHidden;
    } rows[] = {
        {"nothing said", "", true, false},
        {"not shown in menus", "NoDisplay=true", false, false},
        {"not shown, as a number", "NoDisplay=1", false, false},
        {"shown", "NoDisplay=false", true, false},
        {"neither true nor false", "NoDisplay=True", true, false},
        {"deleted by its user", "Hidden=true", false, true},
        {"not deleted", "Hidden=false", true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = readLines(row.lines);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->isVisible, row.isVisible);
        EXPECT_EQ(entry->isHidden, row.isHidden);
    }
    const auto bare = read("[Desktop Entry]\nHidden=true\n");
    EXPECT_TRUE(bare && bare->isHidden) << "what hides an entry need not be one";
}

TEST_F(DesktopEntryTest, NameInTheLanguageOfTheUser) {
    const std::string lines =
        "Name[fr]=Messagerie\n"
        "Name=Chat\n"
        "Name[de]=Plauderei\n"
        "Name[de_AT]=Tratsch\n"
        "Name[sr]=Ћаскање\n"
        "Name[sr@latin]=Ćaskanje\n"
        "Name[sr_RS@latin]=Ćaskanje RS\n"
        "Name[pt_BR]=Conversa\n";
    const struct {
        const char* name;
        const char* language;
        const char* all;
        const char* messages;
        const char* lang;
        const char* entryName;
    } rows[] = {
        {"no locale", "", "", "", "", "Chat"},
        {"the standard's", "", "", "", "C", "Chat"},
        {"the standard's in UTF-8", "", "", "", "C.UTF-8", "Chat"},
        {"a language", "", "", "", "de", "Plauderei"},
        {"a language with an encoding", "", "", "", "de.UTF-8", "Plauderei"},
        {"a country with a name of its own", "", "", "", "de_AT.UTF-8", "Tratsch"},
        {"a country without", "", "", "", "de_CH.UTF-8", "Plauderei"},
        {"a name that comes before the plain one", "", "", "", "fr_FR.UTF-8", "Messagerie"},
        {"a modifier", "", "", "", "sr@latin", "Ćaskanje"},
        {"a country and a modifier", "", "", "", "sr_RS.UTF-8@latin", "Ćaskanje RS"},
        {"another country and a modifier", "", "", "", "sr_ME@latin", "Ćaskanje"},
        {"a modifier without a name", "", "", "", "de_DE@euro", "Plauderei"},
        {"another country's name only", "", "", "", "pt_PT.UTF-8", "Chat"},
        {"messages before the rest", "", "", "fr_FR.UTF-8", "de_DE.UTF-8", "Messagerie"},
        {"one for everything before that", "", "de_AT", "fr_FR.UTF-8", "fr_FR.UTF-8", "Tratsch"},
        {"everything in the standard's", "", "C", "fr_FR.UTF-8", "fr_FR.UTF-8", "Chat"},
        {"languages in the order of preference", "eo:fr:de", "", "", "en_US.UTF-8", "Messagerie"},
        {"a preferred language before all", "de_AT", "fr", "fr", "fr", "Tratsch"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ScopedVariable language("LANGUAGE", row.language);
        const ScopedVariable all("LC_ALL", row.all);
        const ScopedVariable messages("LC_MESSAGES", row.messages);
        const ScopedVariable lang("LANG", row.lang);
        const auto entry = readLines(lines);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->name, row.entryName);
    }
}

TEST_F(DesktopEntryTest, ExecWords) {
    // As in the file: a backslash is written twice, once for the value and once for the word.
    const struct {
        const char* name;
        const char* exec;
        Words words;
    } rows[] = {
        {"nothing", "", {}},
        {"blanks", "  chat \t --new  %u ", {"chat", "--new", "%u"}},
        {"quotes", R"("/opt/my chat/chat" "%u" a"b c"d)", {"/opt/my chat/chat", "%u", "ab cd"}},
        {"an empty word", R"(chat "" x)", {"chat", "", "x"}},
        {"escapes in quotes",
         R"(chat "a\\"b" "a\\\\b" "\\$x" "\\`y\\`")",
         {"chat", "a\"b", "a\\b", "$x", "`y`"}},
        {"a backslash that escapes nothing",
         R"(chat "C:\\\\x" "C:\\y")",
         {"chat", "C:\\x", "C:\\y"}},
        {"an escape outside quotes", R"(chat a\\ b c\\\\d)", {"chat", "a b", "c\\d"}},
        {"single quotes, which many entries have",
         R"(sh -c 'chat "a b" \\n' x)",
         {"sh", "-c", "chat \"a b\" \\n", "x"}},
        {"a blank written as an escape", R"(chat\s--new)", {"chat", "--new"}},
        {"an open quote", R"(chat "a b)", {"chat", "a b"}},
        {"a comment", "chat a#b #c d", {"chat", "a#b"}},
        {"no comment behind a tab", "chat\t#c", {"chat", "#c"}},
        {"line breaks written as escapes", R"(chat\na#b #c\n--new)", {"chat", "a#b", "--new"}},
        {"a line that goes on", R"(chat \\\n --n\\\new "a\\\nb")", {"chat", "--new", "a\nb"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = readLines(std::string("Exec=") + row.exec);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->exec, row.words);
    }
}

TEST_F(DesktopEntryTest, CommandWithoutFieldCodes) {
    const struct {
        const char* name;
        const char* exec;
        Words command;
    } rows[] = {
        {"a link", "chat %u", {"chat"}},
        {"all codes", "chat %f %F %u %U %i %c %k %d %D %n %N %v %m --new", {"chat", "--new"}},
        {"inside a word", "chat --open=%u --new", {"chat", "--open=", "--new"}},
        {"percent signs", "chat 50%% %%u a%%b%%c", {"chat", "50%", "%u", "a%b%c"}},
        {"the marks of forwarded files",
         "flatpak run --file-forwarding org.x @@u %U @@ -- @@ %f @@",
         {"flatpak", "run", "--file-forwarding", "org.x", "--"}},
        {"an assignment stays", "env A=b chat %U", {"env", "A=b", "chat"}},
        {"a lone percent sign", "chat %", {"chat", "%"}},
        {"nothing", "", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = readLines(std::string("Exec=") + row.exec);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->command(), row.command);
    }
}

TEST_F(DesktopEntryTest, Program) {
    test::writeScript(dir / "bin/chat", "");
    test::writeScript(dir / "more/chat", "");
    test::writeScript(dir / "more/my chat", "");
    std::filesystem::create_directory(dir / "bin/folder");
    test::writeText(dir / "bin/text", "");
    test::writeScript(dir / "here/chat", "");
    const std::string bin = dir / "bin";
    const std::string more = dir / "more";
    const ScopedVariable path("PATH", "relative::" + bin + ":" + more);
    const struct {
        const char* name;
        std::string exec;
        std::string program;  // "-": there is none
    } rows[] = {
        {"on the path", "chat %u", bin + "/chat"},
        {"absolute", more + "/chat %u", more + "/chat"},
        {"behind an assignment", "env A=b C= chat %u", bin + "/chat"},
        {"behind assignments of a program elsewhere", "/usr/bin/env A=b chat", bin + "/chat"},
        {"behind an option of env", "env -i --unset=X -u B A=b chat -u C", bin + "/chat"},
        {"env alone", "env", "-"},
        {"assignments alone", "env A=b", "-"},
        {"with a blank", "\"" + more + "/my chat\" %u", more + "/my chat"},
        {"not there", "nowhere/chat", "-"},
        {"not there, absolute", "/nowhere/chat", "-"},
        {"not on the path", "nothing-like-this", "-"},
        {"a folder", bin + "/folder", "-"},
        {"a file that cannot be run", bin + "/text", "-"},
        {"relative to somewhere", "./chat", "-"},
        {"nothing", "", "-"},
        {"an empty word", "\"\"", "-"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto entry = readLines("Exec=" + row.exec);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->program().value_or("-"), row.program);
    }
}

TEST(ProgramsIn, AllExecLines) {
    const struct {
        const char* name;
        const char* text;
        Words programs;
    } rows[] = {
        {"no text", "", {}},
        {"of the entry and its actions",
         "[Desktop Entry]\nName=Chat\nExec=/opt/chat %U\n\n[Desktop Action new]\nExec=chat-new\n",
         {"/opt/chat", "chat-new"}},
        {"the first line", "Exec=chat", {"chat"}},
        {"blanks around", " \tExec = chat  \r\n", {"chat"}},
        {"behind an assignment", "\nExec=env A=b \"/opt/my chat\" %u\n", {"/opt/my chat"}},
        {"escapes", "\nExec=my\\\\\\schat\n", {"my chat"}},
        {"no program", "\nExec=\n\nExec=env A=b\n", {"", ""}},
        {"a program of that name", "\nExec=Exec\nExec=x\n", {"Exec", "x"}},
        {"other keys", "\nTryExec=a\nExecutable=b\nX-Exec=c\nExec[de]=d\nName=Exec\n", {}},
        {"comments", "#Exec=a\n # Exec=b\n", {}},
        {"no key", "Exec\nExec", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(programsIn(row.text), row.programs);
    }
}

TEST_F(DesktopEntryTest, FlatpakMark) {
    EXPECT_TRUE(readLines("Exec=chat\nX-Flatpak=org.example.Chat")->isFlatpak);
    EXPECT_FALSE(readLines("Exec=chat\nX-Flatpak-RenamedFrom=chat")->isFlatpak);
}

}  // namespace
}  // namespace ferrivane
