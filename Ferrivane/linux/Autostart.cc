#include "Ferrivane/linux/Autostart.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <set>
#include <string_view>
#include <system_error>

#include "core/support/AtomicFile.h"
#include "core/support/ReadFile.h"

namespace ferrivane::Autostart {
namespace {

constexpr std::string_view kProgramKey = "TryExec=";

// One word of an Exec line (Desktop Entry Specification, "The Exec key"). Backslashes are doubled
// because the line is a text, which has escapes of its own.
std::string quoted(const std::string& program) {
    std::string word;
    for (const char character : program) {
        if (std::string_view("\"`$").contains(character)) word += "\\\\";
        word.append(character == '%' ? 2 : 1, character);
    }
    const bool isPlain = std::ranges::all_of(program, [](unsigned char character) {
        return std::isalnum(character) != 0 || character >= 0x80 ||
               std::string_view("/._-+,:@%").contains(static_cast<char>(character));
    });
    return isPlain ? word : '"' + word + '"';
}

std::multiset<std::string_view> meaning(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    std::multiset<std::string_view> lines;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        line.remove_suffix(line.size() - 1 - line.find_last_not_of(kBlanks));
        if (!line.empty() && line.front() != '#') lines.insert(line);
    }
    return lines;
}

// Such a path would need escapes that not every session knows.
bool canBeNamed(const std::string& program) {
    return std::ranges::none_of(program, [](unsigned char character) {
        return character < ' ' || character == 0x7f || character == '\\';
    });
}

}  // namespace

std::string entry(const std::filesystem::path& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Ferrivane\n"
           "Icon=com.hollowmere.ferrivane\n" +
           std::string(kProgramKey) + program.string() +
           "\n"
           "Exec=" +
           quoted(program) +
           " --agent\n"
           "StartupNotify=false\n"
           "Terminal=false\n";
}

bool isOurs(const std::string& text, const std::string& programName) {
    const auto lines = meaning(text);
    const auto line = lines.lower_bound(kProgramKey);
    if (line == lines.end() || !line->starts_with(kProgramKey)) return false;
    const std::filesystem::path program = line->substr(kProgramKey.size());
    return program.filename() == programName && lines == meaning(entry(program));
}

std::expected<void, FileError> set(const std::filesystem::path& file,
                                   const std::filesystem::path& program, bool starts) {
    std::error_code error;
    const bool isThere = std::filesystem::symlink_status(file, error).type() !=
                         std::filesystem::file_type::not_found;
    const auto text = readFile(file);
    if (isThere && !(text && isOurs(*text, program.filename()))) return {};
    if (starts) {
        if (!canBeNamed(program)) {
            return std::unexpected(FileError{FileError::Operation::write, file, EINVAL});
        }
        return AtomicFile::write(file, entry(program));
    }
    if (isThere && !std::filesystem::remove(file, error) && error) {
        return std::unexpected(FileError{FileError::Operation::write, file, error.value()});
    }
    return {};
}

}  // namespace ferrivane::Autostart
