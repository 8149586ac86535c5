#include "Ferrivane/linux/DesktopEntries.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>
#include <utility>

#include <unistd.h>

#include "core/port/Paths.h"
#include "core/support/ReadFile.h"
#include "core/support/Text.h"

namespace ferrivane {
namespace {

constexpr std::string_view kSuffix = ".desktop";

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "";
}

std::vector<std::string> splitAt(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

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

// Splits an Exec value into words: blanks separate, double quotes hold together, and inside them a
// backslash takes the next character as it is.
std::vector<std::string> words(std::string_view value) {
    std::vector<std::string> result;
    std::string word;
    bool inWord = false;
    bool inQuotes = false;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '"') {
            inQuotes = !inQuotes;
            inWord = true;
        } else if (c == '\\' && i + 1 < value.size()) {
            word.push_back(value[++i]);
            inWord = true;
        } else if (!inQuotes && (c == ' ' || c == '\t')) {
            if (inWord) result.push_back(std::exchange(word, {}));
            inWord = false;
        } else {
            word.push_back(c);
            inWord = true;
        }
    }
    if (inWord) result.push_back(word);
    return result;
}

// The locale's names in the order in which localised keys are looked for: lang_COUNTRY@MODIFIER,
// lang_COUNTRY, lang@MODIFIER, lang.
std::vector<std::string> localeNames() {
    std::string locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = environment(variable);
        if (!locale.empty()) break;
    }
    const std::size_t at = locale.find('@');
    const std::string modifier = at == std::string::npos ? "" : locale.substr(at);
    const std::string territory = locale.substr(0, std::min(locale.find('.'), at));
    const std::string language = territory.substr(0, territory.find('_'));
    std::vector<std::string> names;
    for (const std::string& base : {territory, language}) {
        for (const std::string& name : {base + modifier, base}) {
            if (!base.empty() && std::ranges::find(names, name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

bool isExecutable(const std::filesystem::path& file) {
    std::error_code error;
    return ::access(file.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(file, error);
}

std::optional<std::filesystem::path> findProgram(const std::string& name) {
    if (name.starts_with('/')) {
        return isExecutable(name) ? std::optional<std::filesystem::path>(name) : std::nullopt;
    }
    if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    for (const std::string& folder : splitAt(environment("PATH"), ':')) {
        const std::filesystem::path file = std::filesystem::path(folder) / name;
        if (file.is_absolute() && isExecutable(file)) return file;
    }
    return std::nullopt;
}

// How many words at the start of Exec are "env" and its assignments.
std::size_t environmentPrefix(const std::vector<std::string>& exec) {
    if (exec.empty() || std::filesystem::path(exec[0]).filename() != "env") return 0;
    std::size_t count = 1;
    while (count < exec.size() && exec[count].find('=') != std::string::npos) ++count;
    return count;
}

// "%u" and its like, and the marks around files that Flatpak forwards.
bool isFieldCode(const std::string& word) {
    return (word.size() == 2 && word[0] == '%' && word[1] != '%') || word.starts_with("@@");
}

std::filesystem::path resolved(const std::filesystem::path& file) {
    std::error_code error;
    auto target = std::filesystem::canonical(file, error);
    return error ? file : target;
}

std::string withSuffix(std::string_view id) {
    std::string name(id);
    if (!name.ends_with(kSuffix)) name += kSuffix;
    return name;
}

std::string withoutSuffix(std::string name) {
    if (name.ends_with(kSuffix)) name.resize(name.size() - kSuffix.size());
    return name;
}

}  // namespace

std::optional<std::filesystem::path> DesktopEntry::program() const {
    const std::size_t prefix = environmentPrefix(exec);
    return prefix < exec.size() ? findProgram(exec[prefix]) : std::nullopt;
}

std::vector<std::string> DesktopEntry::command() const {
    std::vector<std::string> result;
    for (const std::string& word : exec) {
        if (isFieldCode(word)) continue;
        std::string plain = word;
        if (const std::size_t percent = plain.find("%%"); percent != std::string::npos) {
            plain.erase(percent, 1);
        }
        result.push_back(std::move(plain));
    }
    return result;
}

DesktopEntries::DesktopEntries(std::vector<std::filesystem::path> folders)
    : folders_(std::move(folders)) {}

DesktopEntries DesktopEntries::ofSession() {
    std::vector<std::filesystem::path> folders;
    const std::string own = environment("XDG_DATA_HOME");
    folders.push_back(
        (own.starts_with('/') ? std::filesystem::path(own) : Paths::home() / ".local/share") /
        "applications");
    std::string shared = environment("XDG_DATA_DIRS");
    if (shared.empty()) shared = "/usr/local/share:/usr/share";
    for (const std::string& folder : splitAt(shared, ':')) {
        if (folder.starts_with('/')) {
            folders.push_back(std::filesystem::path(folder) / "applications");
        }
    }
    return DesktopEntries(std::move(folders));
}

std::optional<DesktopEntry> DesktopEntries::find(std::string_view id) const {
    const std::string name = withSuffix(id);
    if (name.find('/') != std::string::npos) return std::nullopt;
    for (const std::filesystem::path& folder : folders_) {
        // A dash in an id may stand for a folder.
        std::string relative = name;
        for (std::size_t dash = 0; dash != std::string::npos; dash = name.find('-', dash + 1)) {
            if (dash > 0) {
                relative = name;
                relative[dash] = '/';
            }
            const std::filesystem::path file = folder / relative;
            if (::access(file.c_str(), F_OK) != 0) continue;
            auto entry = read(file, withoutSuffix(name));
            return entry && !entry->isHidden ? entry : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<DesktopEntry> DesktopEntries::findByProgram(
    const std::filesystem::path& program) const {
    const std::filesystem::path target = resolved(program);
    const std::string name = program.filename();

    // As a rule the id is the program's name, and one file tells.
    if (auto entry = find(name); entry && entry->isVisible) {
        const auto started = entry->program();
        if (started && resolved(*started) == target) return entry;
    }

    using Score = std::tuple<bool, bool, bool, std::ptrdiff_t>;
    std::optional<DesktopEntry> best;
    Score bestScore;
    std::set<std::string> seen;
    for (const std::filesystem::path& folder : folders_) {
        std::error_code error;
        for (std::filesystem::recursive_directory_iterator file(folder, error), end;
             !error && file != end; file.increment(error)) {
            if (file->path().extension() != kSuffix) continue;
            std::string id = withoutSuffix(file->path().lexically_relative(folder).string());
            std::ranges::replace(id, '/', '-');
            if (!seen.insert(id).second) continue;
            // Most entries do not even mention the program, or what it is a link to.
            const auto text = readFile(file->path());
            if (!text || (text->find(name) == std::string::npos &&
                          text->find(target.filename().string()) == std::string::npos)) {
                continue;
            }
            auto entry = read(file->path(), id);
            if (!entry || entry->isHidden) continue;
            const auto started = entry->program();
            if (!started) continue;
            const bool isSame = resolved(*started) == target;
            if (!isSame && started->filename() != name) continue;
            const Score score{isSame, entry->isVisible, entry->id == name,
                              -static_cast<std::ptrdiff_t>(entry->exec.size())};
            if (!best || score > bestScore) {
                best = std::move(entry);
                bestScore = score;
            }
        }
    }
    return best;
}

std::optional<DesktopEntry> DesktopEntries::read(const std::filesystem::path& file,
                                                 std::string id) {
    const auto text = readFile(file);
    if (!text) return std::nullopt;
    DesktopEntry entry{.id = std::move(id), .file = file, .name = {}, .exec = {}};
    const std::vector<std::string> locales = localeNames();
    std::size_t nameRank = locales.size() + 1;  // worse than a name without a locale
    bool inEntry = false;
    bool isApplication = false;
    bool noDisplay = false;
    for (const std::string& raw : splitAt(*text, '\n')) {
        const std::string_view line = Text::trim(raw);
        if (line.starts_with('[')) {
            if (inEntry) break;
            inEntry = line == "[Desktop Entry]";
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inEntry || line.starts_with('#') || equals == std::string_view::npos) continue;
        const std::string_view key = Text::trim(line.substr(0, equals));
        const std::string_view value = Text::trim(line.substr(equals + 1));
        if (key == "Type") {
            isApplication = value == "Application";
        } else if (key == "Exec") {
            entry.exec = words(unescaped(value));
        } else if (key == "Hidden") {
            entry.isHidden = value == "true";
        } else if (key == "NoDisplay") {
            noDisplay = value == "true";
        } else if (key == "X-Flatpak") {
            entry.isFlatpak = true;
        } else if (key == "Name") {
            if (nameRank > locales.size()) {
                entry.name = unescaped(value);
                nameRank = locales.size();
            }
        } else if (key.starts_with("Name[") && key.ends_with(']')) {
            const std::string_view locale = key.substr(5, key.size() - 6);
            const auto rank =
                static_cast<std::size_t>(std::ranges::find(locales, locale) - locales.begin());
            if (rank < locales.size() && rank < nameRank) {
                entry.name = unescaped(value);
                nameRank = rank;
            }
        }
    }
    entry.isVisible = !entry.isHidden && !noDisplay;
    if (!isApplication && !entry.isHidden) return std::nullopt;
    return entry;
}

}  // namespace ferrivane
