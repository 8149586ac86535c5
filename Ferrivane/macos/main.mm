#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>
#include <signal.h>

#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/Run.h"
#import "Ferrivane/macos/MacApplications.h"
#import "Ferrivane/macos/MacBrowser.h"
#include "Ferrivane/macos/MacCaller.h"
#import "Ferrivane/macos/MacDialogs.h"
#import "Ferrivane/macos/MacFrontmost.h"
#include "Ferrivane/macos/MacLaunchLock.h"
#import "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/macos/MacPreferences.h"
#include "Ferrivane/macos/MacSavePanel.h"
#import "Ferrivane/macos/MacScripts.h"
#import "Ferrivane/macos/MacSession.h"
#import "Ferrivane/macos/MacUserInterface.h"

int main(int count, char** values) {
    using namespace ferrivane;

    ::signal(SIGPIPE, SIG_IGN);  // a reader of our output that goes away does not end us
    @autoreleasepool {
        MacMainLoop mainLoop;
        MacApplications applications(mainLoop);
        MacBrowser browser(mainLoop);
        MacFrontmost frontmost(mainLoop);
        MacLaunchLock launchLock;
        MacDialogs dialogs(mainLoop);
        MacCaller caller(applications);
        MacSession session(mainLoop);
        MacUserInterface userInterface;
        MacPreferences preferences;
        MacScripts scripts(mainLoop);
        MacSavePanel savePanel;

        return run({values + (count > 0 ? 1 : 0), values + count},
                   Platform{.desktop = Desktop::macOS,
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
                            .isSandboxed = ChromeLauncher::isSandboxed(),
                            .activationToken = std::nullopt});
    }
}
