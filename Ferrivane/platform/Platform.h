// Everything the application asks of a desktop. A shell fills it with its adapters; tests fill it
// with fakes. The referenced ports outlive whoever holds this.
#pragma once

#include <optional>
#include <string>

#include "Ferrivane/platform/Applications.h"
#include "Ferrivane/platform/Browser.h"
#include "Ferrivane/platform/Caller.h"
#include "Ferrivane/platform/Dialogs.h"
#include "Ferrivane/platform/Frontmost.h"
#include "Ferrivane/platform/LaunchLock.h"
#include "Ferrivane/platform/MainLoop.h"
#include "Ferrivane/platform/Preferences.h"
#include "Ferrivane/platform/SavePanel.h"
#include "Ferrivane/platform/Scripts.h"
#include "Ferrivane/platform/Session.h"
#include "Ferrivane/platform/UserInterface.h"

namespace ferrivane {

enum class Desktop { macOS, freedesktop };

struct Platform {
    Desktop
        desktop;  // chooses the few texts that name the desktop, and what is refused at the door
    MainLoop& mainLoop;
    Applications& applications;
    Browser& browser;
    Frontmost& frontmost;
    LaunchLock& launchLock;
    Dialogs& dialogs;
    Caller& caller;
    Session& session;
    UserInterface& userInterface;
    Preferences& preferences;
    Scripts& scripts;
    SavePanel& savePanel;
    bool isSandboxed;                            // Chrome's files and arguments are out of reach
    std::optional<std::string> activationToken;  // came with the start of the process
};

}  // namespace ferrivane
