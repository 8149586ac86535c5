#include "Ferrivane/linux/LinuxApplications.h"

#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Senders.h"
#include "Ferrivane/linux/Version.h"

namespace ferrivane {

std::optional<std::filesystem::path> LinuxApplications::location(std::string_view bundleId) const {
    if (bundleId == ChromeLauncher::chromeBundleIdentifier) {
        return chrome_ ? std::optional(chrome_->entry) : std::nullopt;
    }
    const auto entry = entries_.find(bundleId);
    return entry ? std::optional(entry->file) : std::nullopt;
}

std::optional<std::filesystem::path> LinuxApplications::executable(
    const std::filesystem::path& application) const {
    if (chrome_ && application == chrome_->entry) return chrome_->executable;
    const auto entry = DesktopEntries::read(application, application.stem().string());
    return entry ? entry->program() : std::nullopt;
}

std::optional<std::filesystem::path> LinuxApplications::handler(std::string_view scheme) const {
    DesktopServices* services = desktopServices();
    return services != nullptr ? services->handler(scheme) : std::nullopt;
}

std::vector<pid_t> LinuxApplications::running(std::string_view bundleId) const {
    // A resident application of ours owns its identifier on the session bus.
    DesktopServices* services = desktopServices();
    const auto owner = services != nullptr ? services->busNameOwner(bundleId) : std::nullopt;
    return owner ? std::vector{*owner} : std::vector<pid_t>();
}

std::optional<Opener> LinuxApplications::runningApplication(pid_t process,
                                                            const std::string& startupId) const {
    return Senders::opener({process, Processes::controlGroup(process).value_or(""), startupId},
                           entries_);
}

Applications::Bundle LinuxApplications::ownBundle() const {
    Bundle bundle{.identifier = {}, .version = std::string(buildVersion())};
    const auto entry = entries_.find(AppInfo::bundleIdentifier);
    const auto program = entry && entry->isVisible ? entry->program() : std::nullopt;
    std::error_code error;
    const auto own = Processes::executable(::getpid());
    if (program && own && std::filesystem::equivalent(*program, *own, error)) {
        bundle.identifier = AppInfo::bundleIdentifier;
    }
    return bundle;
}

}  // namespace ferrivane
