#include "Ferrivane/linux/RunningApplications.h"

#include <algorithm>
#include <charconv>
#include <compare>
#include <map>
#include <set>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "Ferrivane/linux/AppUnit.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Senders.h"

namespace ferrivane::RunningApplications {
namespace {

// A parent and its child may have been started in one tick.
bool isOlder(pid_t process, pid_t other) {
    const auto start = [](pid_t of) {
        const auto status = Processes::status(of);
        return std::pair(status ? status->startTime : 0, of);
    };
    return start(process) < start(other);
}

bool isOwn(pid_t process) {
    static const auto own = Processes::executable(::getpid());
    return Processes::executable(process) == own;
}

struct Member {
    bool isLauncher = false;  // a shell around the application tells less than the application
    std::uint64_t startTime = 0;
    pid_t process = 0;

    auto operator<=>(const Member&) const = default;
};

// The oldest process of each application's unit.
std::vector<pid_t> fromUnits() {
    std::map<std::string, Member> oldest;  // by control group
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        const char* const end = name.data() + name.size();
        if (std::from_chars(name.data(), end, process).ptr != end) continue;
        struct stat info{};
        if (::stat(entry.path().c_str(), &info) != 0 || info.st_uid != ::getuid()) continue;
        const auto group = Processes::controlGroup(process);
        if (!group || AppUnit::candidateIds(*group).empty() || isOwn(process)) continue;
        const auto status = Processes::status(process);
        if (!status || status->state == 'Z') continue;
        const Member member{Senders::isLauncher(process), status->startTime, process};
        Member& known = oldest.try_emplace(*group, member).first->second;
        known = std::min(known, member);
    }
    std::vector<pid_t> processes;
    processes.reserve(oldest.size());
    for (const auto& [group, member] : oldest) processes.push_back(member.process);
    return processes;
}

bool isShown(const Opener& application, const DesktopEntries& entries) {
    const auto entry = entries.find(application.bundleId.value_or(""));
    return !entry || entry->isVisible;
}

}  // namespace

std::vector<Applications::Running> current(const DesktopEntries& registry) {
    const DesktopEntries entries = registry.snapshot();
    DesktopServices* const services = desktopServices();
    std::vector<pid_t> processes =
        services != nullptr ? services->windowProcesses() : std::vector<pid_t>();
    const std::set<pid_t> withWindow(processes.begin(), processes.end());
    std::ranges::copy(fromUnits(), std::back_inserter(processes));

    std::set<pid_t> seen;
    std::vector<Applications::Running> result;
    for (const pid_t process : processes) {
        // A program has many windows, and finding its entry may take reading every entry.
        if (isOwn(process) || !seen.insert(process).second) continue;
        const auto application = Senders::application(process, entries);
        if (!application) continue;
        // A service of the desktop has a unit and an entry too, which no menu shows.
        if (!withWindow.contains(process) && !isShown(*application, entries)) continue;
        const auto same = std::ranges::find_if(result, [&](const Applications::Running& known) {
            return known.bundleId == application->bundleId && known.path == application->path;
        });
        if (same == result.end()) {
            result.push_back(
                {process, application->name, application->bundleId, application->path});
        } else if (isOlder(process, same->process)) {
            same->process = process;
        }
    }
    return result;
}

}  // namespace ferrivane::RunningApplications
