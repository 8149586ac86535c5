#include "Ferrivane/linux/LinuxPreferences.h"

#include <cerrno>

#include "Ferrivane/linux/DesktopServices.h"
#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"
#include "core/support/ReadFile.h"

namespace ferrivane {
namespace {

std::filesystem::path file() {
    return Paths::rulesFile().parent_path() / "preferences.ini";
}

}  // namespace

bool LinuxPreferences::flag(std::string_view key) const {
    const std::string value = text(key);
    return value == "true" || value == "1";
}

void LinuxPreferences::setFlag(std::string_view key, bool value) {
    setText(key, value ? "true" : "false");
}

std::string LinuxPreferences::text(std::string_view key) const {
    DesktopServices* const services = desktopServices();
    if (services == nullptr) return {};
    return services->preference(readFile(file()).value_or(""), std::string(key)).value_or("");
}

void LinuxPreferences::setText(std::string_view key, const std::string& value) {
    if (DesktopServices* const services = desktopServices()) {
        const auto before = readFile(file());
        // What is there and cannot be read is not replaced.
        if (!before && before.error().code != ENOENT) return;
        (void)AtomicFile::write(
            file(), services->withPreference(before.value_or(""), std::string(key), value));
    }
}

}  // namespace ferrivane
