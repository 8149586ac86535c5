#include "Ferrivane/linux/Processes.h"

#include <array>
#include <charconv>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane::Processes {
namespace {

std::string entry(pid_t process, const char* name) {
    return "/proc/" + std::to_string(process) + "/" + name;
}

// Files in /proc report no size, so they cannot be read as ordinary files are.
std::string contents(const std::string& path) {
    constexpr std::size_t kLargest = std::size_t{4} * 1024 * 1024;
    std::string text;
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) return text;
    std::array<char, 4096> block;
    while (text.size() < kLargest) {
        const ssize_t count = ::read(file.get(), block.data(), block.size());
        if (count <= 0) break;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
}

std::vector<std::string> splitAtNul(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\0', start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::optional<std::filesystem::path> linkTarget(const std::string& link) {
    std::error_code error;
    auto target = std::filesystem::read_symlink(link, error);
    return error ? std::nullopt : std::optional(std::move(target));
}

}  // namespace

std::optional<Status> status(pid_t process) {
    const std::string text = contents(entry(process, "stat"));
    // "pid (command) state parent …"; the command may hold blanks and parentheses.
    const std::size_t start = text.find('(');
    const std::size_t end = text.rfind(')');
    if (start == std::string::npos || end == std::string::npos || end + 4 >= text.size()) {
        return std::nullopt;
    }
    Status result{text.substr(start + 1, end - start - 1), text[end + 2], 0, 0};
    std::from_chars(text.data() + end + 4, text.data() + text.size(), result.parent);
    // The state is the third of the fields, the start time the twenty-second.
    std::size_t field = end + 2;
    for (int number = 3; number < 22 && field != 0; ++number) field = text.find(' ', field) + 1;
    std::from_chars(text.data() + field, text.data() + text.size(), result.startTime);
    return result;
}

std::optional<std::filesystem::path> executable(pid_t process) {
    const auto target = linkTarget(entry(process, "exe"));
    if (!target) return std::nullopt;
    constexpr std::string_view kDeleted = " (deleted)";
    std::string text = target->string();
    if (text.ends_with(kDeleted)) text.resize(text.size() - kDeleted.size());
    return text;
}

std::vector<std::string> arguments(pid_t process) {
    return splitAtNul(contents(entry(process, "cmdline")));
}

std::optional<std::filesystem::path> workingDirectory(pid_t process) {
    return linkTarget(entry(process, "cwd"));
}

std::map<std::string, std::string, std::less<>> environment(pid_t process) {
    std::map<std::string, std::string, std::less<>> variables;
    for (const std::string& variable : splitAtNul(contents(entry(process, "environ")))) {
        const std::size_t equals = variable.find('=');
        if (equals == std::string::npos) continue;
        variables.emplace(variable.substr(0, equals), variable.substr(equals + 1));
    }
    return variables;
}

std::optional<std::string> controlGroup(pid_t process) {
    // A line per hierarchy; the unified one is "0::path" (cgroups(7)).
    const std::string text = contents(entry(process, "cgroup"));
    constexpr std::string_view kUnified = "0::";
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view line = std::string_view(text).substr(start, end - start);
        if (line.starts_with(kUnified)) return std::string(line.substr(kUnified.size()));
        start = end + 1;
    }
    return std::nullopt;
}

}  // namespace ferrivane::Processes
