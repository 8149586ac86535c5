#include <gtest/gtest.h>

#include "Ferrivane/linux/DesktopEntries.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::writeEntry;
using test::writeText;

// A user's folder of entries, the system's, and some programs.
class DesktopEntriesFind : public ::testing::Test {
  protected:
    DesktopEntriesFind() {
        for (const char* name : {"chat", "mail", "notes"}) {
            test::writeScript(programs / name, "");
            test::writeScript(elsewhere / name, "");
        }
    }

    std::string find(std::string_view id) const {
        const auto entry = entries.find(id);
        return entry ? entry->id + " " + entry->name : "none";
    }
    std::string findByProgram(const std::filesystem::path& program) const {
        const auto entry = entries.findByProgram(program);
        return entry ? entry->id + " " + entry->name : "none";
    }
    std::string exec(const char* program) const { return (programs / program).string(); }

    const test::TempDir dir;
    const std::filesystem::path own = dir / "own";
    const std::filesystem::path shared = dir / "shared";
    const std::filesystem::path programs = dir / "programs";
    const std::filesystem::path elsewhere = dir / "elsewhere";
    const DesktopEntries entries{{own, dir / "missing", shared}};
};

TEST_F(DesktopEntriesFind, ById) {
    writeEntry(own / "chat.desktop", "Own", exec("chat"));
    writeEntry(shared / "chat.desktop", "Shared", exec("chat"));
    writeEntry(shared / "org.example.Mail.desktop", "Mail", exec("mail"));
    writeEntry(shared / "quiet.desktop", "Quiet", exec("mail"), "NoDisplay=true");
    writeEntry(shared / "sub/notes.desktop", "In a folder", exec("notes"));
    writeEntry(shared / "a/b/notes.desktop", "Deeper", exec("notes"));
    writeEntry(shared / "a-b/c/notes.desktop", "Folder with a dash", exec("notes"));
    writeEntry(shared / "my-notes.desktop", "With a dash", exec("notes"));
    writeEntry(shared / "my/notes.desktop", "Without", exec("notes"));
    writeEntry(dir / "outside.desktop", "Outside", exec("chat"));
    const struct {
        const char* name;
        std::string id;
        const char* found;
    } rows[] = {
        {"the user's before the system's", "chat", "chat Own"},
        {"with the file's suffix", "chat.desktop", "chat Own"},
        {"the system's", "org.example.Mail", "org.example.Mail Mail"},
        {"not shown in menus", "quiet", "quiet Quiet"},
        {"in a folder", "sub-notes", "sub-notes In a folder"},
        {"in a folder of a folder", "a-b-notes", "a-b-notes Deeper"},
        {"in a folder with a dash", "a-b-c-notes", "a-b-c-notes Folder with a dash"},
        {"a dash in the file's name first", "my-notes", "my-notes With a dash"},
        {"unknown", "unknown", "none"},
        {"in another case", "Chat", "none"},
        {"a path", "sub/notes", "none"},
        {"a path to elsewhere", "../outside", "none"},
        {"a path to elsewhere, in dashes", "..-outside", "none"},
        {"nothing", "", "none"},
        {"a dash", "-", "none"},
        {"a dash before it", "-chat", "none"},
        {"dashes only", "----", "none"},
        {"too long for a file", std::string(5000, 'x'), "none"},
        {"a thousand dashes", std::string(1000, '-'), "none"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(find(row.id), row.found);
    }
}

TEST_F(DesktopEntriesFind, AHiddenEntryMasksTheSystems) {
    for (const char* id : {"chat", "sub-notes"}) {
        writeEntry(own / (std::string(id) + ".desktop"), "Hidden=true");
    }
    writeEntry(shared / "chat.desktop", "Chat", exec("chat"));
    writeEntry(shared / "sub/notes.desktop", "Notes", exec("notes"));
    EXPECT_EQ(find("chat"), "none");
    EXPECT_EQ(find("sub-notes"), "none");
    EXPECT_EQ(findByProgram(programs / "chat"), "none");
    EXPECT_EQ(findByProgram(programs / "notes"), "none");
}

TEST_F(DesktopEntriesFind, AnUnusableEntryMasksNothing) {
    writeEntry(own / "chat.desktop", "Gone", dir / "removed/chat");
    writeText(own / "mail.desktop", "no entry at all");
    writeEntry(shared / "chat.desktop", "Chat", exec("chat"));
    writeEntry(shared / "mail.desktop", "Mail", exec("mail"));
    writeEntry(shared / "removed.desktop", "Removed", dir / "removed/notes");
    EXPECT_EQ(find("chat"), "chat Chat");
    EXPECT_EQ(find("mail"), "mail Mail");
    EXPECT_EQ(findByProgram(programs / "chat"), "chat Chat");
    EXPECT_EQ(findByProgram(programs / "mail"), "mail Mail");
    EXPECT_EQ(find("removed"), "removed Removed") << "found where there is no better one";
    EXPECT_FALSE(entries.find("removed")->program());
}

TEST_F(DesktopEntriesFind, ByProgram) {
    const std::string chat = exec("chat");
    const struct {
        const char* name;
        std::vector<std::pair<const char*, std::string>> installed;  // an id, its lines
        std::filesystem::path program;
        const char* found;
    } rows[] = {
        {"none installed", {}, programs / "chat", "none"},
        {"another program's", {{"mail", "Exec=" + exec("mail")}}, programs / "chat", "none"},
        {"by its file",
         {{"org.example.Chat", "Exec=" + chat + " %U"}},
         programs / "chat",
         "org.example.Chat 1"},
        {"behind an assignment",
         {{"org.example.Chat", "Exec=env A=b " + chat}},
         programs / "chat",
         "org.example.Chat 1"},
        {"a copy elsewhere, by its name",
         {{"org.example.Chat", "Exec=" + chat}},
         elsewhere / "chat",
         "org.example.Chat 1"},
        {"the file before the name",
         {{"chat", "Exec=" + (elsewhere / "chat").string()}, {"org.example.Chat", "Exec=" + chat}},
         programs / "chat",
         "org.example.Chat 2"},
        {"the visible one first",
         {{"chat", "Exec=" + chat + "\nNoDisplay=true"}, {"org.example.Chat", "Exec=" + chat}},
         programs / "chat",
         "org.example.Chat 2"},
        {"one that is not visible is better than none",
         {{"x", "Exec=" + chat + "\nNoDisplay=true"}},
         programs / "chat",
         "x 1"},
        {"the one with the program's name",
         {{"a", "Exec=" + chat}, {"chat", "Exec=" + chat}, {"z", "Exec=" + chat}},
         programs / "chat",
         "chat 2"},
        {"the one with the fewest arguments",
         {{"a", "Exec=" + chat + " --settings %u"},
          {"b", "Exec=" + chat},
          {"c", "Exec=" + chat + " %u"}},
         programs / "chat",
         "b 2"},
        {"an entry whose program is gone",
         {{"chat", "Exec=" + (dir / "gone/chat").string()}},
         programs / "chat",
         "none"},
        {"a name that is a part of another",
         {{"chat", "Exec=" + exec("mail") + " chat"}},
         programs / "chat",
         "none"},
        {"in a folder", {{"sub/deep/chat", "Exec=" + chat}}, programs / "chat", "sub-deep-chat 1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove_all(shared);
        int count = 0;
        for (const auto& [id, lines] : row.installed) {
            writeEntry(shared / (std::string(id) + ".desktop"),
                       "Name=" + std::to_string(++count) + "\n" + lines);
        }
        EXPECT_EQ(findByProgram(row.program), row.found);
    }
}

TEST_F(DesktopEntriesFind, AProgramBehindALink) {
    std::filesystem::create_symlink(programs / "chat", dir / "chat-stable");
    writeEntry(shared / "org.example.Chat.desktop", "Chat", dir / "chat-stable");
    EXPECT_EQ(findByProgram(programs / "chat"), "org.example.Chat Chat");
    EXPECT_EQ(findByProgram(dir / "chat-stable"), "org.example.Chat Chat");
}

TEST_F(DesktopEntriesFind, OneSnapshotReadsTheEntriesOnce) {
    writeEntry(shared / "org.example.Chat.desktop", "Chat", exec("chat"));
    const DesktopEntries snapshot = entries.snapshot();
    writeEntry(shared / "org.example.Mail.desktop", "Mail", exec("mail"));
    EXPECT_EQ(snapshot.findByProgram(programs / "mail")->name, "Mail") << "read when first asked";
    writeEntry(shared / "org.example.Notes.desktop", "Notes", exec("notes"));
    EXPECT_EQ(snapshot.findByProgram(programs / "notes"), std::nullopt);
    EXPECT_EQ(entries.snapshot().findByProgram(programs / "notes")->name, "Notes");
    EXPECT_EQ(findByProgram(programs / "notes"), "org.example.Notes Notes");
}

TEST_F(DesktopEntriesFind, AProgramThatIsGone) {
    writeEntry(shared / "org.example.Chat.desktop", "Chat", exec("chat"));
    EXPECT_EQ(findByProgram(dir / "upgraded/away/chat"), "org.example.Chat Chat");
    EXPECT_EQ(findByProgram(""), "none");
    EXPECT_EQ(findByProgram("/"), "none");
}

TEST_F(DesktopEntriesFind, TheUsersEntryStandsForTheSystems) {
    writeEntry(own / "chat.desktop", "My mail", exec("mail"));
    writeEntry(shared / "chat.desktop", "Chat", exec("chat"));
    EXPECT_EQ(findByProgram(programs / "chat"), "none");
    EXPECT_EQ(findByProgram(programs / "mail"), "chat My mail");
}

TEST_F(DesktopEntriesFind, AFolderThatMayNotBeReadIsPassedOver) {
    std::filesystem::permissions(dir.path(), test::kForEverybody);
    for (const char* name : {"a", "b", "y", "z"})
        std::filesystem::create_directories(shared / name);
    writeEntry(shared / "m/chat.desktop", "Chat", exec("chat"));
    for (const char* name : {"a", "b", "y", "z"}) {
        std::filesystem::permissions(shared / name, std::filesystem::perms::none);
    }
    std::filesystem::permissions(programs / "chat", test::kForEverybody);
    EXPECT_EQ(test::inChild([&] {
                  test::becomeUnprivileged();
                  return findByProgram(programs / "chat");
              }),
              "m-chat Chat");
    for (const char* name : {"a", "b", "y", "z"}) {
        std::filesystem::permissions(shared / name, std::filesystem::perms::owner_all);
    }
}

TEST_F(DesktopEntriesFind, FoldersOfTheSession) {
    writeEntry(dir / "data/applications/one.desktop", "One", "x");
    writeEntry(dir / "first/applications/two.desktop", "Two", "x");
    writeEntry(dir / "second/applications/two.desktop", "Not this", "x");
    writeEntry(dir / "second/applications/three.desktop", "Three", "x");
    writeEntry(dir / "home/.local/share/applications/four.desktop", "Four", "x");
    const std::string data = dir / "data";
    const std::string folders = (dir / "first").string() + "::" + (dir / "second").string();
    const struct {
        const char* name;
        std::optional<std::string> home;
        std::optional<std::string> shared;
        const char* found;
    } rows[] = {
        {"as the variables say", data, folders, "One Two Three - "},
        {"the user's default", std::nullopt, folders, "- Two Three Four "},
        {"a relative folder counts as none", "data", folders, "- Two Three Four "},
        {"an empty one too", "", folders, "- Two Three Four "},
        {"the system's default", data, std::nullopt, "One - - - "},
        {"relative folders of the system", data, "first:second", "One - - - "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string found = test::inChild([&] {
            const test::ScopedVariable home("HOME", dir / "home");
            const test::ScopedVariable ownData("XDG_DATA_HOME", row.home);
            const test::ScopedVariable sharedData("XDG_DATA_DIRS", row.shared);
            const auto session = DesktopEntries::ofSession();
            std::string names;
            for (const char* id : {"one", "two", "three", "four"}) {
                const auto entry = session.find(id);
                names += (entry ? entry->name : "-") + " ";
            }
            return names;
        });
        EXPECT_EQ(found, row.found);
    }
}

}  // namespace
}  // namespace ferrivane
