#include "Ferrivane/linux/ChromeLocation.h"

#include <algorithm>
#include <array>

namespace ferrivane::ChromeLocator {
namespace {

enum class Package { native, flatpak, snap };

struct Variant {
    std::string_view id;  // of the desktop entry
    Package package;
    std::string_view folder;  // native, Flatpak: below the configuration folder; Snap: below home
};

constexpr std::array kVariants{
    Variant{"google-chrome", Package::native, "google-chrome"},
    Variant{"com.google.Chrome", Package::native, "google-chrome"},
    Variant{"chromium", Package::native, "chromium"},
    Variant{"chromium-browser", Package::native, "chromium"},
    Variant{"google-chrome-beta", Package::native, "google-chrome-beta"},
    Variant{"google-chrome-unstable", Package::native, "google-chrome-unstable"},
    Variant{"com.google.Chrome", Package::flatpak, "google-chrome"},
    Variant{"org.chromium.Chromium", Package::flatpak, "chromium"},
    Variant{"chromium_chromium", Package::snap, "snap/chromium/common/chromium"},
};

std::vector<std::string_view> processNames(const Variant& variant) {
    if (variant.folder.starts_with("google-chrome")) return {"chrome"};
    return {"chromium", "chromium-browser", "chrome"};
}

// Empty when the command has no such switch. Of several the last one counts.
std::filesystem::path fromSwitch(const std::vector<std::string>& command) {
    constexpr std::string_view kSwitch = "--user-data-dir=";
    std::filesystem::path directory;
    for (const std::string& word : command) {
        if (word.starts_with(kSwitch)) directory = word.substr(kSwitch.size());
    }
    return directory;
}

// The environment as the Exec line changes it: "env VARIABLE=value program".
Environment changedBy(const std::vector<std::string>& command, const Environment& environment) {
    return [&](const char* variable) {
        const std::string prefix = std::string(variable) + "=";
        const auto assigned = std::ranges::find_if(
            command, [&](const std::string& word) { return word.starts_with(prefix); });
        return assigned == command.end() ? environment(variable) : assigned->substr(prefix.size());
    };
}

std::filesystem::path userDataDirectory(const Variant& variant, const ChromeLocation& location,
                                        const std::filesystem::path& home,
                                        const Environment& environment) {
    if (auto given = fromSwitch(location.command); !given.empty()) return given;
    switch (variant.package) {
        case Package::native:
            return nativeFolder(variant.folder, home, changedBy(location.command, environment));
        case Package::flatpak:
            return home / ".var/app" / variant.id / "config" / variant.folder;
        case Package::snap:
            return home / variant.folder;
    }
    return {};
}

// An entry that starts this program would send each link round in a circle.
bool isOurselves(const std::filesystem::path& program) {
    std::error_code error;
    return std::filesystem::equivalent(program, "/proc/self/exe", error);
}

}  // namespace

std::filesystem::path nativeFolder(std::string_view folder, const std::filesystem::path& home,
                                   const Environment& environment) {
    if (const std::string own = environment("CHROME_USER_DATA_DIR"); !own.empty()) return own;
    for (const char* variable : {"CHROME_CONFIG_HOME", "XDG_CONFIG_HOME"}) {
        if (const std::string base = environment(variable); !base.empty()) {
            return std::filesystem::path(base) / folder;
        }
    }
    return home / ".config" / folder;
}

std::optional<ChromeLocation> locate(const DesktopEntries& entries,
                                     const std::filesystem::path& home,
                                     const Environment& environment) {
    for (const Variant& variant : kVariants) {
        const auto entry = entries.find(variant.id);
        // The same id may be a package of the system or a Flatpak; only the entry tells.
        if (!entry || entry->isFlatpak != (variant.package == Package::flatpak)) continue;
        const auto program = entry->program();
        if (!program || isOurselves(*program)) continue;
        ChromeLocation location{.entry = entry->file,
                                .executable = *program,
                                .command = entry->command(),
                                .userDataDirectory = {},
                                .processNames = processNames(variant),
                                .isContained = variant.package != Package::native};
        if (variant.package == Package::native) location.folder = variant.folder;
        location.userDataDirectory = userDataDirectory(variant, location, home, environment);
        location.hasOwnFolder =
            variant.package == Package::native &&
            location.userDataDirectory != nativeFolder(variant.folder, home, environment);
        return location;
    }
    return std::nullopt;
}

}  // namespace ferrivane::ChromeLocator
