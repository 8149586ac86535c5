#include "Ferrivane/linux/LinuxPreferences.h"

#include "Ferrivane/linux/DesktopServices.h"
#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"

namespace ferrivane {
namespace {

std::filesystem::path file() {
    return Paths::rulesFile().parent_path() / "preferences.ini";
}

}  // namespace

bool LinuxPreferences::flag(std::string_view key) const {
    DesktopServices* const services = desktopServices();
    return services != nullptr && services->flag(file(), std::string(key));
}

void LinuxPreferences::setFlag(std::string_view key, bool value) {
    if (DesktopServices* const services = desktopServices()) {
        (void)AtomicFile::createFolders(file().parent_path());
        services->setFlag(file(), std::string(key), value);
    }
}

}  // namespace ferrivane
