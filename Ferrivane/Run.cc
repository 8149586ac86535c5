#include "Ferrivane/Run.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "Ferrivane/AppDelegate.h"
#include "Ferrivane/AppInfo.h"
#include "Ferrivane/CLI.h"
#include "Ferrivane/IncomingLinks.h"
#include "Ferrivane/OneShot.h"

namespace ferrivane {
namespace {

// The resident application, until it is told to end.
int runApplication(const Platform& platform, Log& log, bool agentMode, bool showsSettings) {
    AppDelegate delegate(platform, log, agentMode);
    switch (delegate.applicationWillFinishLaunching()) {
        case Session::Place::elsewhere:
            if (!agentMode) platform.session.reopenResident(platform.activationToken);
            platform.mainLoop.runUntilIdle();  // alerts that an older version has left to us
            return 0;
        case Session::Place::alone:
            log.warn("no session bus: links reach Ferrivane only as operands");
            break;
        case Session::Place::resident:
            break;
    }
    delegate.applicationDidFinishLaunching();
    if (showsSettings) {
        delegate.handleGetURL({.urls = {std::string(AppInfo::urlScheme) + ":"},
                               .activationToken = platform.activationToken});
    }
    platform.mainLoop.run();
    log.flush();
    return 0;
}

}  // namespace

int run(const std::vector<std::string>& arguments, const Platform& platform) {
    if (const auto command = CLI::parse(arguments)) {
        platform.browser.locate();
        return CLI::run(*command, platform, std::cout, std::cerr);
    }

    std::error_code error;
    const auto directory = std::filesystem::current_path(error);
    const auto operands = IncomingLinks::fromOperands(arguments, directory);
    // Chrome takes a link that is no URL for a file below the sender's directory, if there is one.
    std::filesystem::current_path("/", error);

    if (!operands.links.empty()) {
        platform.caller.detach();
        const int status = routeAndExit(platform, Log::shared(), operands.links);
        if (operands.askForSettings && !platform.session.reopenResident(std::nullopt)) {
            Log::shared().warn("cannot show the settings: no session bus");
        }
        return status;
    }
    if (operands.askForSettings && platform.session.reopenResident(platform.activationToken)) {
        return 0;
    }
    const bool agentMode = std::ranges::find(arguments, "--agent") != arguments.end();
    return runApplication(platform, Log::shared(), agentMode, operands.askForSettings);
}

}  // namespace ferrivane
