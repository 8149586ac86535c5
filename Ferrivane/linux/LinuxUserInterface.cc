#include "Ferrivane/linux/LinuxUserInterface.h"

#include <iostream>
#include <utility>

#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/linux/Autostart.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Processes.h"
#include "core/port/Paths.h"

namespace ferrivane {

// Drawn by the settings window; this build has none.
void LinuxUserInterface::installMainMenu(const std::vector<Menu>&, Perform) {}

void LinuxUserInterface::showStatusItem(const StatusItem& item, Perform perform) {
    if (DesktopServices* const services = desktopServices()) {
        services->showStatusItem(item, std::move(perform));
    }
}

void LinuxUserInterface::removeStatusItem() {
    if (DesktopServices* const services = desktopServices()) services->removeStatusItem();
}

void LinuxUserInterface::setStartsAtLogin(bool starts) {
    const auto file = Paths::rulesFile().parent_path().parent_path() / "autostart" /
                      (std::string(AppInfo::bundleIdentifier) + ".desktop");
    const auto set =
        Autostart::set(file, Processes::executable(::getpid()).value_or("Ferrivane"), starts);
    if (!set) {
        std::cerr << "Ferrivane: cannot change " << file.string() << ": "
                  << set.error().description() << std::endl;
    }
}

// Until there is a window, the rules open where the person edits texts.
void LinuxUserInterface::showSettings(SettingsView&, const std::optional<std::string>&) {
    const bool hasDisplay =
        !environment("DISPLAY").empty() || !environment("WAYLAND_DISPLAY").empty();
    const auto opened = hasDisplay ? openDocument(Paths::rulesFile())
                                   : std::unexpected(PlatformError{"no display"});
    if (!opened) {
        std::cerr << "Ferrivane: cannot show the settings: " << opened.error().text
                  << "; the rules are in " << Paths::rulesFile().string() << std::endl;
    }
}

std::expected<void, PlatformError> LinuxUserInterface::openDocument(
    const std::filesystem::path& file) {
    DesktopServices* const services = desktopServices();
    if (services == nullptr) {
        return std::unexpected(PlatformError{"the desktop's libraries are missing"});
    }
    const auto opened = services->open(file);
    if (!opened) return std::unexpected(PlatformError{opened.error()});
    return {};
}

}  // namespace ferrivane
