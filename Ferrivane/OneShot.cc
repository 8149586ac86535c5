#include "Ferrivane/OneShot.h"

#include <chrono>
#include <utility>

#include "Ferrivane/FirstRun.h"
#include "Ferrivane/LinkQueue.h"

namespace ferrivane {

int routeAndExit(const Platform& platform, Log& log, const std::vector<std::string>& links,
                 const std::filesystem::path& rulesFile) {
    constexpr std::chrono::seconds kFlushLimit{2};
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
        log.flush(kFlushLimit);
        platform.caller.release(status());
    });
    platform.mainLoop.runUntilIdle();
    log.flush(kFlushLimit);
    return status();
}

}  // namespace ferrivane
