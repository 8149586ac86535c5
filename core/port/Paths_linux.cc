// Folders follow the XDG Base Directory Specification: an absolute variable wins, else the default
// below $HOME, else below the account's home.
#include <cstdlib>
#include <utility>

#include <pwd.h>
#include <unistd.h>

#include "core/port/Paths.h"

namespace ferrivane::Paths {
namespace {

std::filesystem::path absoluteFromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr || value[0] != '/') return {};
    return value;
}

std::filesystem::path xdgFolder(const char* variable, const char* belowHome) {
    const std::filesystem::path folder = absoluteFromEnvironment(variable);
    return folder.empty() ? home() / belowHome : folder;
}

std::filesystem::path& locatedChrome() {
    static std::filesystem::path directory;
    return directory;
}

}  // namespace

std::filesystem::path home() {
    static const std::filesystem::path folder = [] {
        std::filesystem::path fromEnvironment = absoluteFromEnvironment("HOME");
        if (!fromEnvironment.empty()) return fromEnvironment;
        const passwd* account = ::getpwuid(::getuid());  // NOLINT(concurrency-mt-unsafe)
        return std::filesystem::path(account != nullptr ? account->pw_dir : "/");
    }();
    return folder;
}

std::filesystem::path rulesFile() {
    static const std::filesystem::path file =
        xdgFolder("XDG_CONFIG_HOME", ".config") / "ferrivane" / "rules.json";
    return file;
}

std::filesystem::path logDirectory() {
    static const std::filesystem::path folder =
        xdgFolder("XDG_STATE_HOME", ".local/state") / "ferrivane";
    return folder;
}

std::filesystem::path chromeUserDataDirectory() {
    const std::filesystem::path& directory = locatedChrome();
    return directory.empty() ? xdgFolder("XDG_CONFIG_HOME", ".config") / "google-chrome"
                             : directory;
}

void setChromeUserDataDirectory(std::filesystem::path directory) {
    locatedChrome() = std::move(directory);
}

}  // namespace ferrivane::Paths
