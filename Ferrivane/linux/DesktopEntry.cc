#include "Ferrivane/linux/DesktopEntry.h"

#include <algorithm>
#include <utility>

#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/ExecLine.h"
#include "core/support/ReadFile.h"
#include "core/support/Text.h"

namespace ferrivane {
namespace {

// Undoes the escapes of a value of type string.
std::string unescaped(std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            text.push_back(value[i]);
            continue;
        }
        switch (const char next = value[++i]) {
            case 's':
                text.push_back(' ');
                break;
            case 'n':
                text.push_back('\n');
                break;
            case 't':
                text.push_back('\t');
                break;
            case 'r':
                text.push_back('\r');
                break;
            case '\\':
                text.push_back('\\');
                break;
            default:
                text.push_back('\\');
                text.push_back(next);
        }
    }
    return text;
}

bool isTrue(std::string_view value) {
    return value == "true" || value == "1";
}

// The languages of the user, the preferred one first: $LANGUAGE lists them, else the locale is one.
std::vector<std::string> languages() {
    std::vector<std::string> list = environmentList("LANGUAGE");
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (!list.empty()) break;
        if (const std::string locale = environment(variable); !locale.empty()) {
            list.push_back(locale);
        }
    }
    return list;
}

// The names of locales in the order in which localised keys are looked for; for each language
// lang_COUNTRY@MODIFIER, lang_COUNTRY, lang@MODIFIER, lang.
std::vector<std::string> localeNames() {
    std::vector<std::string> names;
    for (const std::string& locale : languages()) {
        const std::size_t at = locale.find('@');
        const std::string modifier = at == std::string::npos ? "" : locale.substr(at);
        const std::string territory = locale.substr(0, std::min(locale.find('.'), at));
        const std::string language = territory.substr(0, territory.find('_'));
        for (const std::string& base : {territory, language}) {
            for (const std::string& name : {base + modifier, base}) {
                if (!base.empty() && std::ranges::find(names, name) == names.end()) {
                    names.push_back(name);
                }
            }
        }
    }
    return names;
}

struct Setting {
    std::string_view key;
    std::string_view value;
};

// Absent when the line, which has no blanks around it, sets no key.
std::optional<Setting> settingOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string_view::npos) return std::nullopt;
    return Setting{Text::trim(line.substr(0, equals)), Text::trim(line.substr(equals + 1))};
}

std::vector<std::string> wordsOfExec(std::string_view value) {
    return ExecLine::words(unescaped(value));
}

std::optional<DesktopEntry> parse(std::string_view text, const std::filesystem::path& file,
                                  std::string id) {
    DesktopEntry entry{.id = std::move(id), .file = file, .name = {}, .exec = {}};
    const std::vector<std::string> locales = localeNames();
    std::size_t nameRank = locales.size() + 1;  // worse than a name without a locale
    bool inEntry = false;
    bool isApplication = false;
    bool noDisplay = false;
    for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        const std::string_view line = Text::trim(text.substr(start, end - start));
        if (line.starts_with('[')) {
            if (inEntry) break;
            inEntry = line == "[Desktop Entry]";
            continue;
        }
        const auto setting = inEntry ? settingOf(line) : std::nullopt;
        if (!setting) continue;
        const auto [key, value] = *setting;
        if (key == "Type") {
            isApplication = value == "Application";
        } else if (key == "Exec") {
            entry.exec = wordsOfExec(value);
        } else if (key == "Hidden") {
            entry.isHidden = isTrue(value);
        } else if (key == "NoDisplay") {
            noDisplay = isTrue(value);
        } else if (key == "X-Flatpak") {
            entry.isFlatpak = true;
        } else if (key == "Name") {
            if (nameRank >= locales.size()) {
                entry.name = unescaped(value);
                nameRank = locales.size();
            }
        } else if (key.starts_with("Name[") && key.ends_with(']')) {
            const std::string_view locale = key.substr(5, key.size() - 6);
            const auto rank =
                static_cast<std::size_t>(std::ranges::find(locales, locale) - locales.begin());
            if (rank < locales.size() && rank <= nameRank) {
                entry.name = unescaped(value);
                nameRank = rank;
            }
        }
    }
    entry.isVisible = !entry.isHidden && !noDisplay;
    if (!isApplication && !entry.isHidden) return std::nullopt;
    return entry;
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::read(const std::filesystem::path& file, std::string id) {
    const auto text = readFile(file);
    return text ? parse(*text, file, std::move(id)) : std::nullopt;
}

std::optional<std::filesystem::path> DesktopEntry::program() const {
    return ExecLine::findProgram(ExecLine::program(exec));
}

std::vector<std::string> DesktopEntry::command() const {
    return ExecLine::command(exec);
}

std::vector<std::string> programsIn(std::string_view text) {
    constexpr std::string_view kExec = "Exec";
    std::vector<std::string> programs;
    // Most lines are texts in other languages: what the search passes over is not looked at.
    for (std::size_t start = text.find(kExec); start < text.size();
         start = text.find(kExec, start)) {
        const std::size_t before = text.rfind('\n', start);
        const std::size_t first = before == std::string_view::npos ? 0 : before + 1;
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const auto setting = settingOf(Text::trim(text.substr(first, end - first)));
        if (setting && setting->key == kExec) {
            programs.push_back(ExecLine::program(wordsOfExec(setting->value)));
        }
        start = end;
    }
    return programs;
}

}  // namespace ferrivane
