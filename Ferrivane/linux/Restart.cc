#include "Ferrivane/linux/Restart.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "Ferrivane/Router.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Modules.h"
#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Toolkit.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane::Restart {
namespace {

// Names the descriptor of a file in memory: for each alert its reason and its link, each followed
// by a NUL.
constexpr const char* kVariable = "FERRIVANE_ALERTS";

std::string contents(int file) {
    std::string text;
    std::array<char, 4096> block{};
    ::lseek(file, 0, SEEK_SET);
    for (ssize_t count = 0; (count = ::read(file, block.data(), block.size())) > 0;) {
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
}

bool write(int file, const std::string& text) {
    return ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

}  // namespace

bool isDue() {
    std::error_code error;
    const std::string running = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto executable = Processes::executable(::getpid());
    return running.ends_with(" (deleted)") && executable &&
           ::access(executable->c_str(), X_OK) == 0 && !Modules::find(Modules::windows());
}

void run(const std::deque<LaunchFailureAlert>& alerts) {
    const auto executable = Processes::executable(::getpid());
    const FileDescriptor file(::memfd_create("alerts", 0));
    if (!executable || !file) return;
    std::string text;
    for (const LaunchFailureAlert& alert : alerts) {
        text += alert.reason + '\0' + alert.link + '\0';
    }
    if (!write(file.get(), text)) return;
    ::setenv(kVariable, std::to_string(file.get()).c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    std::string name = executable->filename();
    std::string option = "--agent";
    std::array<char*, 3> arguments{name.data(), option.data(), nullptr};
    ::execv(executable->c_str(), arguments.data());
    ::unsetenv(kVariable);  // NOLINT(concurrency-mt-unsafe)
}

std::deque<LaunchFailureAlert> takeAlerts() {
    const std::string variable = environment(kVariable);
    ::unsetenv(kVariable);  // NOLINT(concurrency-mt-unsafe)
    int number = -1;
    std::from_chars(variable.data(), variable.data() + variable.size(), number);
    if (number <= STDERR_FILENO) return {};
    const FileDescriptor file(number);
    const std::string text = contents(file.get());

    std::deque<LaunchFailureAlert> alerts;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t middle = text.find('\0', start);
        const std::size_t end = middle == std::string::npos ? middle : text.find('\0', middle + 1);
        if (end == std::string::npos) break;
        alerts.push_back(launchFailureAlert(
            text.substr(middle + 1, end - middle - 1),
            {ChromeLauncher::LaunchError::Kind::platform, text.substr(start, middle - start)}));
        start = end + 1;
    }
    return alerts;
}

}  // namespace ferrivane::Restart
