#include "Ferrivane/Run.h"

#include <filesystem>
#include <iostream>

#include "Ferrivane/CLI.h"
#include "Ferrivane/IncomingLinks.h"
#include "Ferrivane/OneShot.h"

namespace ferrivane {

int run(const std::vector<std::string>& arguments, const Platform& platform) {
    if (const auto command = CLI::parse(arguments)) {
        return CLI::run(*command, platform, std::cout, std::cerr);
    }

    std::error_code error;
    const auto directory = std::filesystem::current_path(error);
    const auto links = IncomingLinks::fromOperands(arguments, directory);
    if (!links.empty()) {
        // Chrome takes a link that is no URL for a file below the sender's directory, if there is
        // one.
        std::filesystem::current_path("/", error);
        platform.caller.detach();
        return routeAndExit(platform, Log::shared(), links);
    }

    // The place of the resident application.
    std::cerr << "Ferrivane: this build opens the links it is started with; it has no agent and no "
                 "settings window yet. See Ferrivane --help\n";
    return 1;
}

}  // namespace ferrivane
