#include "Ferrivane/linux/LinuxUserInterface.h"

#include <iostream>

#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Environment.h"
#include "core/port/Paths.h"

namespace ferrivane {

// Drawn by the settings window and by the tray; this build has neither.
void LinuxUserInterface::installMainMenu(const std::vector<Menu>&, Perform) {}
void LinuxUserInterface::showStatusItem(const StatusItem&, Perform) {}
void LinuxUserInterface::removeStatusItem() {}

// Until there is a window, the rules open where the person edits texts.
void LinuxUserInterface::showSettings(const std::optional<std::string>&) {
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
