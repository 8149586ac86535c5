#include "Ferrivane/linux/LinuxApplications.h"

#include <algorithm>
#include <array>
#include <sstream>

#include <locale.h>
#include <string.h>
#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/RunningApplications.h"
#include "Ferrivane/linux/Senders.h"
#include "Ferrivane/linux/Version.h"
#include "core/support/Text.h"

namespace ferrivane {
namespace {

// Whether the xdg-utils (1.1.3) open a link by a desktop's own program, which follows no $BROWSER.
bool isDesktopWithOwnOpener() {
    constexpr std::array<std::string_view, 9> kNames{"Cinnamon", "X-Cinnamon", "ENLIGHTENMENT",
                                                     "KDE",      "DEEPIN",     "Deepin",
                                                     "deepin",   "MATE",       "XFCE"};
    constexpr std::array<std::string_view, 5> kSessions{"gnome", "MATE", "xfce", "xfce4",
                                                        "Xfce Session"};
    const auto isKnown = [&](const std::string& name) {
        return name.starts_with("GNOME") || std::ranges::find(kNames, name) != kNames.end();
    };
    return std::ranges::any_of(environmentList("XDG_CURRENT_DESKTOP"), isKnown) ||
           !environment("KDE_FULL_SESSION").empty() ||
           !environment("GNOME_DESKTOP_SESSION_ID").empty() ||
           !environment("MATE_DESKTOP_SESSION_ID").empty() ||
           std::ranges::find(kSessions, environment("DESKTOP_SESSION")) != kSessions.end();
}

// The first program of $BROWSER, a list of commands, that is installed.
std::optional<std::filesystem::path> programOfBrowserVariable() {
    for (const std::string& command : environmentList("BROWSER")) {
        std::istringstream words(command);
        DesktopEntry entry{.id = {}, .file = {}, .name = {}, .exec = {}};
        for (std::string word; words >> word;) entry.exec.push_back(word);
        const auto program = entry.program();
        if (program && program->filename() != "xdg-open") return program;
    }
    return std::nullopt;
}

}  // namespace

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
    const auto entry = DesktopEntry::read(application, application.stem().string());
    return entry ? entry->program() : std::nullopt;
}

std::optional<std::string> LinuxApplications::identifier(
    const std::filesystem::path& application) const {
    std::error_code error;
    return std::filesystem::exists(application, error) ? entries_.idOf(application) : std::nullopt;
}

std::optional<std::filesystem::path> LinuxApplications::handler(std::string_view scheme) const {
    DesktopServices* services = desktopServices();
    return services != nullptr ? services->handler(scheme) : std::nullopt;
}

void LinuxApplications::setHandler(
    const std::filesystem::path& application, std::string_view scheme,
    std::function<void(std::expected<void, PlatformError>)> completion) {
    const auto id = identifier(application);
    DesktopServices* services = desktopServices();
    if (!id) return completion(std::unexpected(PlatformError{"no installed desktop entry"}));
    if (services == nullptr) {
        return completion(std::unexpected(PlatformError{"the desktop's library cannot be loaded"}));
    }
    const auto result = services->setHandler(*id, scheme);
    if (!result) return completion(std::unexpected(PlatformError{result.error()}));
    completion({});
}

std::optional<std::string> LinuxApplications::overridingSetting(
    const std::filesystem::path& application,
    const std::vector<std::string_view>& unchanged) const {
    DesktopServices* services = unchanged.empty() ? nullptr : desktopServices();
    for (const std::string_view scheme : unchanged) {
        const auto list = services != nullptr ? services->overridingList(scheme) : std::nullopt;
        if (!list) continue;
        std::string keys;
        for (const std::string_view other : unchanged) {
            if (services->overridingList(other) != list) continue;
            keys.append(keys.empty() ? "" : " and ").append("x-scheme-handler/").append(other);
        }
        return list->string() + " counts before mimeapps.list; change or remove " + keys +
               " in its group [Default Applications]";
    }
    const auto program = programOfBrowserVariable();
    if (!program || isDesktopWithOwnOpener()) return std::nullopt;
    const auto entry = entries_.findByProgram(*program);
    if (entry && entry->file == application) return std::nullopt;
    return "$BROWSER is set to \"" + environment("BROWSER") +
           "\"; xdg-settings follows it, and xdg-open where there is no display; unset or change "
           "it";
}

std::vector<pid_t> LinuxApplications::running(std::string_view bundleId) const {
    // A resident application of ours owns its identifier on the session bus.
    DesktopServices* services = desktopServices();
    const auto owner = services != nullptr ? services->busNameOwner(bundleId) : std::nullopt;
    return owner ? std::vector{*owner} : std::vector<pid_t>();
}

std::vector<Applications::Running> LinuxApplications::runningApplications() const {
    return RunningApplications::current(entries_);
}

std::string LinuxApplications::displayName(const std::filesystem::path& application) const {
    const auto entry = DesktopEntry::read(application, application.stem().string());
    return entry && !entry->name.empty() ? entry->name : application.stem().string();
}

bool LinuxApplications::comesBefore(const std::string& name, const std::string& other) const {
    static const locale_t language = ::newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, "", nullptr);
    const std::string a = Text::foldCase(name);
    const std::string b = Text::foldCase(other);
    if (language == nullptr) return a < b;
    return ::strcoll_l(a.c_str(), b.c_str(), language) < 0;
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
        bundle.location = entry->file;
    }
    return bundle;
}

}  // namespace ferrivane
