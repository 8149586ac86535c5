#include "Ferrivane/linux/LinuxBrowser.h"

#include <algorithm>
#include <charconv>
#include <memory>

#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Spawn.h"
#include "core/ChromeSingleton.h"
#include "core/port/Paths.h"
#include "core/support/FileError.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;

constexpr auto kStartInterval = 10ms;
constexpr auto kStartLimit = 5s;
constexpr auto kLinkLimit = 1s;

using Completion = std::function<void(std::expected<pid_t, PlatformError>)>;

// A started browser on its way to its first answer.
struct Start {
    Completion completion;
    std::chrono::steady_clock::time_point end;
    pid_t process;  // 0 once it has ended

    bool isOver() const { return !completion; }
    void finish(std::expected<pid_t, PlatformError> outcome) {
        if (!isOver()) std::exchange(completion, nullptr)(std::move(outcome));
    }
};

PlatformError cannotStart(const std::string& program, int code) {
    return {"cannot start " + program + ": " + systemErrorText(code)};
}

std::string hostName() {
    utsname names{};
    return ::uname(&names) == 0 ? names.nodename : "";
}

// Not one of the browser's helpers, which carry their type and may have put their arguments into
// one text.
bool isMainProcess(const std::vector<std::string>& arguments) {
    constexpr std::string_view kType = "--type=";
    if (arguments.size() == 1 && arguments[0].find(" " + std::string(kType)) != std::string::npos) {
        return false;
    }
    return !arguments.empty() && std::ranges::none_of(arguments, [&](const std::string& argument) {
        return argument.starts_with(kType);
    });
}

bool isOurs(pid_t process) {
    struct stat info{};
    return ::stat(("/proc/" + std::to_string(process)).c_str(), &info) == 0 &&
           info.st_uid == ::getuid();
}

}  // namespace

std::optional<pid_t> LinuxBrowser::running() const {
    if (!location_) return std::nullopt;
    if (isSandboxed_) return visibleProcess();
    const auto process = listener();
    return process ? process : lockOwner();
}

bool LinuxBrowser::isRunning(pid_t process) const {
    // The lock first: a connection to a browser that hangs would fill its queue.
    return location_ && lockOwner() == process && listener() == process;
}

std::optional<pid_t> LinuxBrowser::listener() const {
    const auto socket = ChromeSingleton::socketPath(location_->userDataDirectory);
    if (!socket) return std::nullopt;
    const auto process = ChromeSingleton::listener(*socket);
    return process ? std::optional(*process) : std::nullopt;
}

std::optional<pid_t> LinuxBrowser::lockOwner() const {
    std::error_code error;
    const std::string lock =
        std::filesystem::read_symlink(location_->userDataDirectory / "SingletonLock", error);
    const std::size_t dash = lock.rfind('-');  // host names hold dashes too
    if (error || dash == std::string::npos || lock.substr(0, dash) != hostName()) return {};
    pid_t process = 0;
    const char* const end = lock.data() + lock.size();
    if (std::from_chars(lock.data() + dash + 1, end, process).ptr != end) return std::nullopt;
    const auto status = process > 0 ? Processes::status(process) : std::nullopt;
    if (!status || status->state == 'Z' || !isBrowserProgram(process)) return std::nullopt;
    return process;
}

bool LinuxBrowser::isBrowserProgram(pid_t process) const {
    const auto executable = isOurs(process) ? Processes::executable(process) : std::nullopt;
    return executable && std::ranges::find(location_->processNames, executable->filename()) !=
                             location_->processNames.end();
}

std::optional<pid_t> LinuxBrowser::visibleProcess() const {
    std::optional<pid_t> first;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        if (process < 1 || (first && *first < process) || !isBrowserProgram(process)) continue;
        const auto arguments = Processes::arguments(process);
        if (isMainProcess(arguments) && hasItsFilesHere(process, arguments)) first = process;
    }
    return first;
}

bool LinuxBrowser::hasItsFilesHere(pid_t process, const std::vector<std::string>& arguments) const {
    constexpr std::string_view kSwitch = "--user-data-dir=";
    const auto last = std::find_if(arguments.rbegin(), arguments.rend(), [&](const auto& argument) {
        return argument.starts_with(kSwitch);
    });
    if (last != arguments.rend()) {
        return last->substr(kSwitch.size()) == location_->userDataDirectory;
    }
    const auto variables = Processes::environment(process);
    if (variables.empty() || location_->folder.empty()) return true;
    const auto valueOf = [&](const char* name) {
        const auto found = variables.find(name);
        return found == variables.end() ? "" : found->second;
    };
    const std::string home = valueOf("HOME");
    return ChromeLocator::nativeFolder(location_->folder,
                                       home.empty() ? Paths::home() : std::filesystem::path(home),
                                       valueOf) == location_->userDataDirectory;
}

void LinuxBrowser::launch(const std::filesystem::path&, const Arguments& arguments,
                          Completion completion) {
    if (!location_) {
        return completion(std::unexpected(PlatformError{"Chrome has no desktop entry"}));
    }
    std::vector<std::string> command = location_->command;
    command.insert(command.end(), arguments.switches.begin(), arguments.switches.end());
    const auto process = spawnDetached(command, arguments.activationToken);
    if (!process) return completion(std::unexpected(cannotStart(command.front(), process.error())));

    auto start =
        std::make_shared<Start>(Start{[this, done = std::move(completion)](const auto& outcome) {
                                          done(outcome);
                                          if (outcome && *outcome > 0) started_(*outcome);
                                      },
                                      loop_.now() + kStartLimit, *process});
    // A wrapper may leave the browser behind and end well. From outside, a contained one is not
    // seen to be ready. Any other early end means that nothing was opened.
    loop_.watchChild(*process, [this, start](int status) {
        start->process = 0;
        if (status == 0 && location_->isContained) return start->finish(0);
        if (status == 0) return;
        start->finish(std::unexpected(
            PlatformError{"Chrome ended with status " + std::to_string(status) + " at its start"}));
    });
    const auto poll = [this, start, process = *process](const auto& again) -> void {
        if (start->isOver()) return;
        const auto browser = lockOwner();
        const bool isReady = browser && listener() == browser;
        if (isReady || loop_.now() >= start->end) {
            loop_.forgetChild(process);
            return start->finish(isReady ? *browser : start->process);
        }
        loop_.after(kStartInterval, [again] { again(again); });
    };
    poll(poll);
}

void LinuxBrowser::openLink(const std::filesystem::path&, const Arguments& link,
                            Completion completion) {
    if (!location_) {
        return completion(std::unexpected(PlatformError{"Chrome has no desktop entry"}));
    }
    std::vector<std::string> command = location_->command;
    command.insert(command.end(), link.switches.begin(), link.switches.end());
    const auto process = spawnDetached(hostSpawn_.command(std::move(command), link.activationToken),
                                       link.activationToken);
    if (!process) {
        return completion(
            std::unexpected(cannotStart(location_->command.front(), process.error())));
    }
    // One that stays is the browser; one that ends has passed the link on, or has failed.
    auto start =
        std::make_shared<Start>(Start{std::move(completion), loop_.now() + kLinkLimit, *process});
    loop_.watchChild(*process, [this, start](int status) {
        if (status == 0) return start->finish(running().value_or(0));
        start->finish(std::unexpected(
            PlatformError{"Chrome ended with status " + std::to_string(status) + " at its start"}));
    });
    loop_.after(kLinkLimit, [this, start] {
        if (start->isOver()) return;
        loop_.forgetChild(start->process);
        start->finish(running().value_or(0));
        started_(start->process);
    });
}

std::expected<pid_t, PlatformError> LinuxBrowser::startRelay(
    const std::filesystem::path& executable, const Arguments& arguments,
    std::function<void(int status)> completion) {
    std::vector<std::string> command{executable.string()};
    // The executable alone would not find the browser that runs.
    if (location_->isContained || location_->hasOwnFolder) command = location_->command;
    command.insert(command.end(), arguments.switches.begin(), arguments.switches.end());
    const auto process = spawnDetached(command, arguments.activationToken);
    if (!process) return std::unexpected(cannotStart(command.front(), process.error()));
    loop_.watchChild(*process, std::move(completion));
    return *process;
}

void LinuxBrowser::abandonRelay(pid_t process) {
    loop_.forgetChild(process);
    if (lockOwner() == process) started_(process);
}

}  // namespace ferrivane
