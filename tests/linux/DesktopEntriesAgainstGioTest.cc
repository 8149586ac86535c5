// Our reader of desktop entries against the desktop's own library.
#include <algorithm>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "Ferrivane/linux/DesktopEntries.h"
#include "core/support/Text.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using Records = std::map<std::string, std::string>;  // by id

std::string described(const std::filesystem::path& file, std::string_view name, bool isVisible,
                      const std::vector<std::string>& exec) {
    std::string text = file.string() + ", \"" + std::string(Text::trim(name)) + "\"" +
                       (isVisible ? "" : ", not shown") + ":";
    for (const std::string& word : exec) text += " <" + word + ">";
    return text;
}

std::vector<std::string> fields(const std::string& record) {
    std::vector<std::string> result;
    std::istringstream stream(record);
    for (std::string field; std::getline(stream, field, '\x1F');) result.push_back(field);
    return result;
}

// What GIO says of all installed entries and of these ids.
Records fromGio(const std::vector<std::string>& ids) {
    std::vector<std::string> command{GIO_ENTRIES};
    command.insert(command.end(), ids.begin(), ids.end());
    std::istringstream output(test::outputOf(command));
    Records records;
    for (std::string record; std::getline(output, record, '\x1E');) {
        const auto parts = fields(record);
        if (parts.size() < 4) {
            ADD_FAILURE() << record;
            continue;
        }
        const bool isNamed = parts[2] != "Unnamed";  // GIO's own word
        records[parts[0]] = described(parts[1], isNamed ? parts[2] : "", parts[3] == "visible",
                                      {parts.begin() + 4, parts.end()});
    }
    return records;
}

Records fromUs(const std::vector<std::string>& ids) {
    const auto entries = DesktopEntries::ofSession();
    Records records;
    for (const std::string& id : ids) {
        const auto entry = entries.find(id);
        // GIO knows no entry whose program is missing.
        if (!entry || (!entry->exec.empty() && !entry->program())) continue;
        records[id] = described(entry->file, entry->name, entry->isVisible, entry->exec);
    }
    return records;
}

std::vector<std::string> idsIn(const std::filesystem::path& folder) {
    std::vector<std::string> ids;
    std::error_code error;
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder, error)) {
        if (file.path().extension() != ".desktop") continue;
        std::string id = file.path().lexically_relative(folder).replace_extension().string();
        std::ranges::replace(id, '/', '-');
        ids.push_back(id);
    }
    return ids;
}

class DesktopEntriesAgainstGio : public ::testing::Test {
  protected:
    void write(const std::string& id, const std::string& lines) const {
        test::writeEntry(own / (id + ".desktop"), "Name=" + id + "\n" + lines);
    }

    const test::TempDir dir;
    const std::filesystem::path own = dir / "own/applications";
    const std::filesystem::path shared = dir / "shared/applications";
    const test::ScopedVariable ownData{"XDG_DATA_HOME", dir / "own"};
    const test::ScopedVariable sharedData{"XDG_DATA_DIRS", dir / "shared"};
};

TEST_F(DesktopEntriesAgainstGio, EverythingInstalledHere) {
    for (const char* locale : {"C", "de_DE.UTF-8", "pt_BR.UTF-8", "sr_RS.UTF-8@latin", "zh_TW"}) {
        SCOPED_TRACE(locale);
        const test::ScopedVariable data("XDG_DATA_DIRS", std::nullopt);
        const test::ScopedVariable lang("LANG", locale);
        std::vector<std::string> ids;
        for (const char* folder : {"/usr/local/share/applications", "/usr/share/applications"}) {
            for (std::string& id : idsIn(folder)) ids.push_back(std::move(id));
        }
        EXPECT_FALSE(ids.empty()) << "no application is installed";
        EXPECT_EQ(fromUs(ids), fromGio(ids));
    }
}

TEST_F(DesktopEntriesAgainstGio, OddEntries) {
    write("plain", "Exec=sh %U");
    write("two-execs", "Exec=sh a\nExec=sh b");
    write("two-names", "Exec=sh\nName=second");
    write("hidden", "Exec=sh\nHidden=true");
    write("no-display", "Exec=sh\nNoDisplay=true");
    write("no-display-as-number", "Exec=sh\nNoDisplay=1");
    write("no-display-in-capitals", "Exec=sh\nNoDisplay=True");
    write("no-display-and-blanks", "Exec=sh\nNoDisplay=true  ");
    write("only-elsewhere", "Exec=sh\nOnlyShowIn=Nowhere;");
    write("missing-program", "Exec=no-such-program-anywhere");
    write("missing-file", "Exec=/nowhere/program");
    write("folder-for-program", "Exec=/usr");
    write("no-exec", "");
    write("empty-exec", "Exec=");
    write("over-the-bus", "DBusActivatable=true");
    write("assignments", "Exec=env A=b 'C=d e' sh x");
    write("single-quotes", "Exec=sh -c 'a b' 'c\"d' x'y z'");
    write("double-quotes", R"(Exec=sh "a b" "c\\\\d" "e\\ f" "\\$x" "\\q" "\\`" "'" "" "a\\"b")");
    write("escapes", R"(Exec=sh a\\ b c\\\\d \s e\tf \\"x\\" g\\'h)");
    write("comment", "Exec=sh a#b #c d");
    write("codes", "Exec=sh %%u a%%b --x=%u %U %i \"%c\"");
    write("crlf", "Exec=sh a\r\nNoDisplay=true\r");
    write("escaped-name", "Name=\\sa\\tb\\nc\\\\d\\se\nExec=sh");
    write("other-groups", "Exec=sh\n[Desktop Action x]\nName=Action\nExec=sh x\nNoDisplay=true");
    write("blanks", "  Exec  =  sh   a  \n\tNoDisplay\t=\ttrue\t");
    write("empty-name", "Name=\nExec=sh");
    write("languages",
          "Exec=sh\nName[de]=Deutsch\nName[de_AT]=Oida\nName[fr]=Franc\nName[sr@latin]=L");
    write("sub/in-a-folder", "Exec=sh");
    write("sub/deep/down/in-folders", "Exec=sh");
    write("sub-with/dashes", "Exec=sh");
    write("org.example.Masked", "Hidden=true");
    test::writeEntry(shared / "org.example.Masked.desktop", "Masked", "sh");
    write("org.example.Own", "Exec=sh own");
    test::writeEntry(shared / "org.example.Own.desktop", "Shared", "sh shared");
    write("org.example.Broken", "Exec=/nowhere/program");
    test::writeEntry(shared / "org.example.Broken.desktop", "Shared", "sh shared");
    test::writeText(own / "org.example.Nonsense.desktop", "nonsense");
    test::writeEntry(shared / "org.example.Nonsense.desktop", "Shared", "sh shared");
    test::writeText(own / "link.desktop", "[Desktop Entry]\nType=Link\nName=Link\nURL=x\n");
    test::writeText(own / "no-type.desktop", "[Desktop Entry]\nName=None\nExec=sh\n");
    test::writeText(own / "no-name.desktop", "[Desktop Entry]\nType=Application\nExec=sh\n");
    test::writeText(own / "empty-file.desktop", "");
    test::writeText(own / "not-an-entry.txt", "[Desktop Entry]\nType=Application\nExec=sh\n");
    std::filesystem::create_symlink("plain.desktop", own / "link-to-plain.desktop");
    std::filesystem::create_symlink("nowhere", own / "dangling.desktop");
    std::filesystem::create_symlink("/dev/null", own / "null.desktop");
    std::filesystem::create_directory(own / "folder.desktop");

    const struct {
        const char* language;
        const char* locale;
    } rows[] = {{"", ""},           {"", "C"},          {"", "de_AT.UTF-8"},
                {"", "de_CH"},      {"", "fr.UTF-8"},   {"", "sr_RS@latin"},
                {"fr:de", "en_US"}, {"eo:de_AT", "fr"}, {"de", "C"}};
    std::vector<std::string> ids = idsIn(own);
    ids.emplace_back("unknown");
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.language) + " " + row.locale);
        const test::ScopedVariable language("LANGUAGE", row.language);
        const test::ScopedVariable lang("LANG", row.locale);
        EXPECT_EQ(fromUs(ids), fromGio(ids));
    }
}

// What GIO refuses as a whole and we read: the worst that can come of it is that an application
// which the desktop does not start is known by its name.
TEST_F(DesktopEntriesAgainstGio, WhereWeAreMoreForgiving) {
    write("missing-trial", "Exec=sh\nTryExec=no-such-program-anywhere");
    write("open-quote", "Exec=sh \"a b");
    write("garbage", "Exec=sh\nnonsense");
    test::writeText(own / "second-group.desktop",
                    "[Other]\nA=b\n[Desktop Entry]\nType=Application\nExec=sh\n");
    const auto ids = idsIn(own);
    EXPECT_EQ(fromUs(ids).size(), ids.size());
    EXPECT_EQ(fromGio(ids), Records());
}

}  // namespace
}  // namespace ferrivane
