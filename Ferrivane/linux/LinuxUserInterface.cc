#include "Ferrivane/linux/LinuxUserInterface.h"

#include <iostream>
#include <utility>

#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/SettingsWindow.h"
#include "Ferrivane/linux/Autostart.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Restart.h"
#include "Ferrivane/linux/Toolkit.h"
#include "core/port/Paths.h"

namespace ferrivane {

void LinuxUserInterface::installMainMenu(const std::vector<Menu>& menus, Perform perform) {
    menus_ = menus;
    perform_ = std::move(perform);
}

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
                  << set.error().description() << "\n";
    }
}

void LinuxUserInterface::showSettings(SettingsView& view,
                                      const std::optional<std::string>& activationToken) {
    const auto shown = toolkit(loop_);
    if (!shown) {
        if (Restart::isDue() && perform_) return leaveToNextVersion(activationToken);
        std::cerr << "Ferrivane: cannot show the settings: " << shown.error()
                  << "; the rules are in " << Paths::rulesFile().string() << "\n";
        return;
    }
    const std::string key = std::string(SettingsWindow::autosaveName) + "Frame";
    (*shown)->showSettings(
        view,
        {.menus = menus_,
         .perform = perform_,
         .frame = preferences_.text(key),
         .frameChanged = [this,
                          key](const std::string& frame) { preferences_.setText(key, frame); }},
        activationToken ? activationToken : desktopServices()->takeStatusItemToken());
    bringToFrontSoon(loop_);
}

// After an upgrade the windows are those of the next version, which the bus starts. Not before
// whoever called us has been answered.
void LinuxUserInterface::leaveToNextVersion(const std::optional<std::string>& activationToken) {
    loop_.after({}, [this, activationToken] {
        perform_(Command::quit);
        desktopServices()->activate(std::string(AppInfo::bundleIdentifier), activationToken);
    });
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
