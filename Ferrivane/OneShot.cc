#include "Ferrivane/OneShot.h"

#include <utility>

#include "Ferrivane/FirstRun.h"
#include "Ferrivane/LinkQueue.h"

namespace ferrivane {

int routeAndExit(const Platform& platform, Log& log, const std::vector<std::string>& links,
                 const std::filesystem::path& rulesFile) {
    FirstRun::ensureConfig(log, rulesFile);

    bool allOpened = true;
    const auto status = [&allOpened] { return allOpened ? 0 : 1; };
    const auto opener = platform.caller.opener();
    auto token = platform.activationToken;
    LinkQueue queue(platform, log, rulesFile);
    for (const std::string& link : links) {
        // A token is good for one activation.
        queue.add({link, opener, std::exchange(token, std::nullopt)},
                  [&allOpened](bool opened) { allOpened = allOpened && opened; });
    }
    queue.whenIdle([&] {
        log.flush();
        platform.caller.release(status());
    });
    platform.mainLoop.runUntilIdle();
    log.flush();
    return status();
}

}  // namespace ferrivane
