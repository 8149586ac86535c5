// Desktop entries: any file, and Exec lines as GLib's own shell splits them.
#include <algorithm>
#include <memory>

#include <glib.h>
#include <stdlib.h>

#include "Ferrivane/linux/DesktopEntry.h"
#include "Ferrivane/linux/ExecLine.h"
#include "core/support/Text.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/MemoryFile.h"

namespace ferrivane::fuzz {
namespace {

bool isSame(const DesktopEntry& a, const DesktopEntry& b) {
    return a.name == b.name && a.exec == b.exec && a.isVisible == b.isVisible &&
           a.isHidden == b.isHidden && a.isFlatpak == b.isFlatpak;
}

std::optional<DesktopEntry> read(const std::string& text) {
    static const MemoryFile file;
    file.write(text);
    return DesktopEntry::read(file.path(), "id");
}

// A value of type string that stands for this text.
std::string escaped(std::string_view text) {
    std::string value;
    for (const char c : text) {
        constexpr std::string_view kSpecial("\\\n\r\t ");
        constexpr std::string_view kLetters("\\nrts");
        if (const auto found = kSpecial.find(c); found != std::string_view::npos) {
            value.push_back('\\');
            value.push_back(kLetters[found]);
        } else {
            value.push_back(c);
        }
    }
    return value;
}

std::optional<std::vector<std::string>> wordsOfShell(const std::string& text) {
    gint count = 0;
    gchar** words = nullptr;
    if (g_shell_parse_argv(text.c_str(), &count, &words, nullptr) == FALSE) return std::nullopt;
    std::vector<std::string> result(words, words + count);
    g_strfreev(words);
    return result;
}

void checkFile(const std::string& text) {
    const auto entry = read(text);
    const auto longer = read(text + "\n# a comment\n\n[Another Group]\nName=x\nExec=y\n");
    require(entry.has_value() == longer.has_value(), "other groups make no entry");
    if (!entry) return;
    require(isSame(*entry, *longer), "comments and other groups do not matter");
    require(!(entry->isHidden && entry->isVisible), "what is hidden is not visible");
    if (const auto program = entry->program()) require(program->is_absolute(), "absolute");
    require(entry->command().size() <= entry->exec.size(), "a command has no more words");
    if (entry->exec.empty()) return;
    const auto programs = programsIn(text);
    require(std::ranges::find(programs, ExecLine::program(entry->exec)) != programs.end(),
            "its program is among those of the text");
}

void checkExec(std::string text) {
    std::erase(text, '\0');
    if (Text::trim(escaped(text)) != escaped(text)) return;  // rare kinds of blanks
    const std::string head = "[Desktop Entry]\nType=Application\nName=" + escaped(text);
    const auto entry = read(head + "\nExec=" + escaped(text) + "\n");
    require(entry.has_value(), "an entry of an application is one");
    require(entry->name == text, "escapes are undone");
    // Behind an escaped blank GLib still sees a comment, which no shell does.
    if (text.contains("\\ #") || text.contains("\\\n#")) return;
    if (const auto words = wordsOfShell(text)) require(entry->exec == *words, "words of a shell");
}

}  // namespace

void run(std::string_view input) {
    [[maybe_unused]] static const int set =
        ::setenv("LANGUAGE", "de_AT@euro:fr", 1);  // NOLINT(concurrency-mt-unsafe)
    checkFile(std::string(input));
    checkExec(std::string(input));
}

}  // namespace ferrivane::fuzz
