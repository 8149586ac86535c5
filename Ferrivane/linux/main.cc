#include <cstdlib>
#include <iostream>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "Ferrivane/Run.h"
#include "Ferrivane/TerminalDialogs.h"
#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/DetachedCaller.h"
#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/LaunchLockFile.h"
#include "Ferrivane/linux/LinuxApplications.h"
#include "Ferrivane/linux/LinuxBrowser.h"
#include "Ferrivane/linux/LinuxFrontmost.h"
#include "core/port/Paths.h"

namespace {

std::string environment(const char* variable) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "";
}

// A caller may hand us closed streams, whose places no file of ours may take, and ignored signals.
void secureInheritance() {
    int file = 0;
    do {
        file = ::open("/dev/null", O_RDWR);
    } while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) ::close(file);
    ::signal(SIGPIPE, SIG_IGN);  // a reader of our output that goes away does not end us
    ::signal(SIGCHLD, SIG_DFL);  // or the ends of our children would go unseen
}

// Taken out of the environment, so that no other program can use it up.
std::optional<std::string> takeActivationToken() {
    const std::string token = environment("XDG_ACTIVATION_TOKEN");
    ::unsetenv("XDG_ACTIVATION_TOKEN");  // NOLINT(concurrency-mt-unsafe)
    return token.empty() ? std::nullopt : std::optional(token);
}

// Once nobody waits for us any more.
void moveToOwnScope(std::optional<pid_t> browser) {
    if (!browser) return;
    if (ferrivane::DesktopServices* services = ferrivane::desktopServices()) {
        services->moveToOwnScope(*browser);
    }
}

}  // namespace

int main(int count, char** values) {
    using namespace ferrivane;

    secureInheritance();
    const auto entries = DesktopEntries::ofSession();
    const auto chrome = ChromeLocator::locate(entries, Paths::home(), environment);
    if (chrome) Paths::setChromeUserDataDirectory(chrome->userDataDirectory);

    EventLoop mainLoop;
    LinuxApplications applications(entries, chrome);
    std::optional<pid_t> started;
    LinuxBrowser browser(chrome, mainLoop, [&started](pid_t process) { started = process; });
    LinuxFrontmost frontmost(entries);
    LaunchLockFile launchLock(LaunchLockFile::defaultPath());
    TerminalDialogs dialogs(std::cerr, ::isatty(STDERR_FILENO) != 0);
    DetachedCaller caller(entries);

    const int status = run({values + (count > 0 ? 1 : 0), values + count},
                           Platform{.desktop = Desktop::freedesktop,
                                    .mainLoop = mainLoop,
                                    .applications = applications,
                                    .browser = browser,
                                    .frontmost = frontmost,
                                    .launchLock = launchLock,
                                    .dialogs = dialogs,
                                    .caller = caller,
                                    .activationToken = takeActivationToken()});
    moveToOwnScope(started);
    return status;
}
