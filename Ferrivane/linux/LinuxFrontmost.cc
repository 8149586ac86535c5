#include "Ferrivane/linux/LinuxFrontmost.h"

#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Senders.h"

namespace ferrivane {
namespace {

// An X server that serves a Wayland session does not know which of its windows is in front.
bool canTell() {
    return !environment("DISPLAY").empty() && environment("WAYLAND_DISPLAY").empty();
}

}  // namespace

std::optional<Frontmost::Application> LinuxFrontmost::current() const {
    DesktopServices* services = canTell() ? desktopServices() : nullptr;
    const auto window = services != nullptr ? services->activeWindow() : std::nullopt;
    if (!window) return std::nullopt;
    Application application{window->process, window->applicationClass};
    if (window->process) {
        const auto known = Senders::application(*window->process, entries_);
        if (known && known->name) application.name = known->name;
    }
    return application;
}

bool LinuxFrontmost::activate(pid_t process) {
    DesktopServices* services = canTell() ? desktopServices() : nullptr;
    return services != nullptr && services->activateTopmostWindow(process);
}

void LinuxFrontmost::open(const std::filesystem::path&,
                          std::function<void(std::expected<void, PlatformError>)> completion) {
    completion({});
}

}  // namespace ferrivane
