#include <chrono>
#include <cstdlib>
#include <iostream>

#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/Run.h"
#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/DetachedCaller.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/LaunchLockFile.h"
#include "Ferrivane/linux/LinuxApplications.h"
#include "Ferrivane/linux/LinuxBrowser.h"
#include "Ferrivane/linux/LinuxDialogs.h"
#include "Ferrivane/linux/LinuxFrontmost.h"
#include "Ferrivane/linux/LinuxPreferences.h"
#include "Ferrivane/linux/LinuxSavePanel.h"
#include "Ferrivane/linux/LinuxScripts.h"
#include "Ferrivane/linux/LinuxSession.h"
#include "Ferrivane/linux/LinuxUserInterface.h"
#include "core/ChromeProfiles.h"
#include "core/port/Paths.h"

namespace {

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
    const std::string token = ferrivane::environment("XDG_ACTIVATION_TOKEN");
    ::unsetenv("XDG_ACTIVATION_TOKEN");  // NOLINT(concurrency-mt-unsafe)
    return token.empty() ? std::nullopt : std::optional(token);
}

}  // namespace

int main(int count, char** values) {
    using namespace ferrivane;

    secureInheritance();
    const auto entries = DesktopEntries::ofSession();
    std::optional<ChromeLocation> chrome;
    const auto locate = [&] {
        chrome = ChromeLocator::locate(entries, Paths::home(), environment);
        Paths::setChromeUserDataDirectory(chrome ? chrome->userDataDirectory : "");
    };

    EventLoop mainLoop;
    mainLoop.whenResting([] {
        ChromeProfiles::releaseBuffers();
        ::malloc_trim(0);
    });
    const auto moveToOwnScope = [&mainLoop](pid_t browser) {
        // When nobody waits for us any more, and Chrome has started its helpers.
        mainLoop.after(std::chrono::milliseconds(500), [browser] {
            if (DesktopServices* services = desktopServices()) services->moveToOwnScope(browser);
        });
    };
    LinuxApplications applications(entries, chrome);
    const HostSpawn hostSpawn;
    const bool isSandboxed = ChromeLauncher::isSandboxed() || hostSpawn.isNeeded();
    LinuxBrowser browser(chrome, mainLoop, locate, moveToOwnScope, isSandboxed, hostSpawn);
    LinuxFrontmost frontmost(entries);
    LaunchLockFile launchLock(LaunchLockFile::defaultPath());
    LinuxDialogs dialogs(mainLoop, std::cerr, ::isatty(STDERR_FILENO) != 0);
    DetachedCaller caller(entries);
    LinuxSession session(mainLoop);
    LinuxPreferences preferences;
    LinuxUserInterface userInterface(mainLoop, preferences);
    LinuxScripts scripts(mainLoop, hostSpawn);
    LinuxSavePanel savePanel(mainLoop);

    return run({values + (count > 0 ? 1 : 0), values + count},
               Platform{.desktop = Desktop::freedesktop,
                        .mainLoop = mainLoop,
                        .applications = applications,
                        .browser = browser,
                        .frontmost = frontmost,
                        .launchLock = launchLock,
                        .dialogs = dialogs,
                        .caller = caller,
                        .session = session,
                        .userInterface = userInterface,
                        .preferences = preferences,
                        .scripts = scripts,
                        .savePanel = savePanel,
                        .isSandboxed = isSandboxed,
                        .activationToken = takeActivationToken()});
}
