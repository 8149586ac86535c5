// Does one thing that has no button yet, with the real folder, panel and file manager:
//
//   install_probe install     prints the outcome and the state after it
//   install_probe reveal
#include <iostream>

#include "Ferrivane/HelperScript.h"
#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/LinuxSavePanel.h"
#include "Ferrivane/linux/LinuxScripts.h"
#include "core/port/Paths.h"
#include "tests/support/FakePlatform.h"

int main(int count, char** values) {
    using namespace ferrivane;
    EventLoop loop;
    LinuxScripts scripts(loop);
    LinuxSavePanel savePanel(loop);
    test::FakePlatform fake;
    const Platform platform{.desktop = Desktop::freedesktop,
                            .mainLoop = loop,
                            .applications = fake.applications,
                            .browser = fake.browser,
                            .frontmost = fake.frontmost,
                            .launchLock = fake.launchLock,
                            .dialogs = fake.dialogs,
                            .caller = fake.caller,
                            .session = fake.session,
                            .userInterface = fake.userInterface,
                            .preferences = fake.preferences,
                            .scripts = scripts,
                            .savePanel = savePanel,
                            .isSandboxed = true,
                            .activationToken = {}};
    Log log(Paths::logDirectory());
    const std::string question = count > 1 ? values[1] : "";
    if (question == "reveal") {
        HelperScript::revealForManualInstall(platform, log);
        return 0;
    }
    HelperScript::install(platform, log, [&](const HelperScript::Result& result) {
        std::cout << (result ? "installed" : result.error().description()) << "\n"
                  << static_cast<int>(HelperScript::state(platform)) << '\n'
                  << std::flush;
    });
    loop.runUntilIdle();
    return 0;
}
