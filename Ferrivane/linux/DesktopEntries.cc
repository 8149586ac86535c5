#include "Ferrivane/linux/DesktopEntries.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include <unistd.h>

#include "Ferrivane/linux/Environment.h"
#include "core/port/Paths.h"
#include "core/support/ReadFile.h"
#include "core/support/Text.h"

namespace ferrivane {
namespace {

constexpr std::string_view kSuffix = ".desktop";
// Larger ones, a hundred times what any application has, are not searched for a program.
constexpr std::size_t kLargestEntry = std::size_t{1024} * 1024;

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

bool isTrue(std::string_view value) {
    return value == "true" || value == "1";
}

// Splits an Exec value into words as a shell does, which is what desktops do with it: blanks and
// line breaks separate, quotes hold together, a backslash takes the next character as it is and a
// line break away, a word that begins with "#" begins a comment up to the line's end, but not
// behind a tab.
std::vector<std::string> words(std::string_view value) {
    constexpr std::string_view kEscapable("\"\\$`\n");  // inside double quotes
    std::vector<std::string> result;
    std::string word;
    bool inWord = false;
    char quote = '\0';
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        const bool canEscape =
            i + 1 < value.size() &&
            (quote == '\0' || (quote == '"' && kEscapable.find(value[i + 1]) != kEscapable.npos));
        if (c == quote) {
            quote = '\0';
        } else if (quote == '\0' && (c == '"' || c == '\'')) {
            quote = c;
            inWord = true;
        } else if (c == '\\' && canEscape) {
            ++i;
            if (value[i] == '\n' && quote == '\0') continue;
            word.push_back(value[i]);
            inWord = true;
        } else if (quote == '\0' && (c == ' ' || c == '\t' || c == '\n')) {
            if (inWord) result.push_back(std::exchange(word, {}));
            inWord = false;
        } else if (quote == '\0' && c == '#' && !inWord && (i == 0 || value[i - 1] != '\t')) {
            i = std::min(value.find('\n', i), value.size());
        } else {
            word.push_back(c);
            inWord = true;
        }
    }
    if (inWord) result.push_back(word);
    return result;
}

// The languages of the user, the preferred one first: $LANGUAGE lists them, else the locale is one.
std::vector<std::string> languages() {
    std::vector<std::string> list = splitAt(environment("LANGUAGE"), ':');
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
        std::filesystem::path file = std::filesystem::path(folder) / name;
        if (file.is_absolute() && isExecutable(file)) return file;
    }
    return std::nullopt;
}

// How many words at the start of Exec are "env", its options and its assignments.
std::size_t environmentPrefix(const std::vector<std::string>& exec) {
    if (exec.empty() || std::filesystem::path(exec[0]).filename() != "env") return 0;
    std::size_t count = 1;
    while (count < exec.size() &&
           (exec[count].starts_with('-') || exec[count].find('=') != std::string::npos)) {
        count += exec[count] == "-u" || exec[count] == "-C" ? 2 : 1;  // with an argument
    }
    return count;
}

// The marks around files that Flatpak forwards.
bool isForwardingMark(std::string_view word) {
    return word.starts_with("@@");
}

// "%u" and its like vanish, "%%" is a percent sign.
std::string withoutFieldCodes(std::string_view word) {
    std::string plain;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const bool isCode = word[i] == '%' && i + 1 < word.size();
        if (isCode) ++i;
        if (!isCode || word[i] == '%') plain.push_back(word[i]);
    }
    return plain;
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

std::string idIn(const std::filesystem::path& folder, const std::filesystem::path& file) {
    std::string id = withoutSuffix(file.lexically_relative(folder).string());
    std::ranges::replace(id, '/', '-');
    return id;
}

// The file of an entry's name below a folder. A dash may stand for a folder.
std::optional<std::filesystem::path> fileIn(const std::filesystem::path& folder,
                                            const std::string& name) {
    std::filesystem::path file = folder / name;
    if (::access(file.c_str(), F_OK) == 0) return file;
    for (std::size_t dash = name.find('-', 1); dash < name.size();
         dash = name.find('-', dash + 1)) {
        const std::string part = name.substr(0, dash);
        const std::filesystem::path subfolder = folder / part;
        if (part == "." || part == "..") continue;
        if (::access(subfolder.c_str(), F_OK) != 0) continue;
        if (auto found = fileIn(subfolder, name.substr(dash + 1))) return found;
    }
    return std::nullopt;
}

// Desktops pass over an entry whose program is missing.
bool isUsable(const DesktopEntry& entry) {
    return entry.exec.empty() || entry.program();
}

}  // namespace

std::optional<std::filesystem::path> DesktopEntry::program() const {
    const std::size_t prefix = environmentPrefix(exec);
    return prefix < exec.size() ? findProgram(exec[prefix]) : std::nullopt;
}

std::vector<std::string> DesktopEntry::command() const {
    std::vector<std::string> result;
    for (const std::string& word : exec) {
        if (isForwardingMark(word)) continue;
        std::string plain = withoutFieldCodes(word);
        if (word.empty() || !plain.empty()) result.push_back(std::move(plain));
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

DesktopEntries DesktopEntries::snapshot() const {
    DesktopEntries copy(folders_);
    copy.files_ = std::make_shared<std::optional<std::vector<File>>>();
    return copy;
}

std::optional<DesktopEntry> DesktopEntries::find(std::string_view id) const {
    const std::string name = withSuffix(id);
    if (name.find('/') != std::string::npos) return std::nullopt;
    std::optional<DesktopEntry> withoutProgram;
    for (const std::filesystem::path& folder : folders_) {
        const auto file = fileIn(folder, name);
        if (!file) continue;
        auto entry = read(*file, withoutSuffix(name));
        if (entry && entry->isHidden) break;
        if (entry && isUsable(*entry)) return entry;
        if (!withoutProgram) withoutProgram = std::move(entry);
    }
    return withoutProgram;
}

std::vector<DesktopEntries::File> DesktopEntries::readFolders() const {
    std::vector<File> files;
    constexpr auto kOptions = std::filesystem::directory_options::skip_permission_denied;
    for (const std::filesystem::path& folder : folders_) {
        std::error_code error;
        for (std::filesystem::recursive_directory_iterator file(folder, kOptions, error), end;
             !error && file != end; file.increment(error)) {
            if (file->path().extension() != kSuffix) continue;
            auto text = readFile(file->path());
            if (text && text->size() <= kLargestEntry) {
                files.push_back({folder, file->path(), std::move(*text)});
            }
        }
    }
    return files;
}

std::optional<DesktopEntry> DesktopEntries::findByProgram(
    const std::filesystem::path& program) const {
    const std::filesystem::path target = resolved(program);
    const std::string name = program.filename();
    const std::string targetName = target.filename();

    // As a rule the id is the program's name, and one file tells.
    if (auto entry = find(name); entry && entry->isVisible) {
        const auto started = entry->program();
        if (started && resolved(*started) == target) return entry;
    }

    std::optional<std::vector<File>> own;
    std::optional<std::vector<File>>& files = files_ ? *files_ : own;
    if (!files) files = readFolders();

    using Score = std::tuple<bool, bool, bool, std::ptrdiff_t>;
    std::optional<DesktopEntry> best;
    Score bestScore;
    for (const File& file : *files) {
        // Most entries do not even mention the program, or what it is a link to.
        if (!Text::contains(file.text, name) &&
            (name == targetName || !Text::contains(file.text, targetName))) {
            continue;
        }
        auto entry = parse(file.text, file.path, idIn(file.folder, file.path));
        if (!entry || entry->isHidden) continue;
        const auto started = entry->program();
        if (!started) continue;
        const bool isSame = resolved(*started) == target;
        if (!isSame && started->filename() != name) continue;
        // Of several with one id another one may count.
        const auto counting = find(entry->id);
        if (!counting || counting->file != entry->file) continue;
        const Score score{isSame, entry->isVisible, entry->id == name,
                          -static_cast<std::ptrdiff_t>(entry->exec.size())};
        if (!best || score > bestScore) {
            best = std::move(entry);
            bestScore = score;
        }
    }
    return best;
}

std::optional<std::string> DesktopEntries::idOf(const std::filesystem::path& file) const {
    for (const std::filesystem::path& folder : folders_) {
        const auto relative = file.lexically_relative(folder);
        if (!relative.empty() && *relative.begin() != ".." && file.extension() == kSuffix) {
            return idIn(folder, file);
        }
    }
    return std::nullopt;
}

std::optional<DesktopEntry> DesktopEntries::read(const std::filesystem::path& file,
                                                 std::string id) {
    const auto text = readFile(file);
    return text ? parse(*text, file, std::move(id)) : std::nullopt;
}

std::optional<DesktopEntry> DesktopEntries::parse(std::string_view text,
                                                  const std::filesystem::path& file,
                                                  std::string id) {
    DesktopEntry entry{.id = std::move(id), .file = file, .name = {}, .exec = {}};
    const std::vector<std::string> locales = localeNames();
    std::size_t nameRank = locales.size() + 1;  // worse than a name without a locale
    bool inEntry = false;
    bool isApplication = false;
    bool noDisplay = false;
    for (const std::string& raw : splitAt(text, '\n')) {
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

}  // namespace ferrivane
