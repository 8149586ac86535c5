#include "Ferrivane/linux/ExecLine.h"

#include <algorithm>
#include <utility>

#include <unistd.h>

#include "Ferrivane/linux/Environment.h"

namespace ferrivane::ExecLine {
namespace {

bool isExecutable(const std::filesystem::path& file) {
    std::error_code error;
    return ::access(file.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(file, error);
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

}  // namespace

// As a shell does it, which is what desktops do: blanks and line breaks separate, quotes hold
// together, a backslash takes the next character as it is and a line break away, a word that begins
// with "#" begins a comment up to the line's end, but not behind a tab.
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

std::string program(const std::vector<std::string>& words) {
    const std::size_t prefix = environmentPrefix(words);
    return prefix < words.size() ? words[prefix] : "";
}

std::optional<std::filesystem::path> findProgram(const std::string& name) {
    if (name.starts_with('/')) {
        return isExecutable(name) ? std::optional<std::filesystem::path>(name) : std::nullopt;
    }
    if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    for (const std::string& folder : environmentList("PATH")) {
        std::filesystem::path file = std::filesystem::path(folder) / name;
        if (file.is_absolute() && isExecutable(file)) return file;
    }
    return std::nullopt;
}

std::vector<std::string> command(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    for (const std::string& word : words) {
        if (isForwardingMark(word)) continue;
        std::string plain = withoutFieldCodes(word);
        if (word.empty() || !plain.empty()) result.push_back(std::move(plain));
    }
    return result;
}

}  // namespace ferrivane::ExecLine
