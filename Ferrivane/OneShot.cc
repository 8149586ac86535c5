#include "Ferrivane/OneShot.h"

#include <chrono>
#include <functional>

#include "Ferrivane/FirstRun.h"
#include "Ferrivane/Router.h"

namespace ferrivane {
namespace {

constexpr std::chrono::seconds kFlushLimit{2};

struct Batch {
    const Platform& platform;
    Log& log;
    const std::vector<std::string>& links;
    const std::optional<Opener> opener;
    Router router;
    bool allOpened = true;

    void routeFrom(std::size_t index) {
        if (index == links.size()) {
            log.flush(kFlushLimit);
            platform.caller.release(status());
            return;
        }
        // A token is good for one activation.
        const auto token = index == 0 ? platform.activationToken : std::nullopt;
        router.route(links[index], opener, token, [this, index](bool opened) {
            allOpened = allOpened && opened;
            // By way of the main loop: a thousand links are no deeper than one.
            platform.mainLoop.after({}, [this, index] { routeFrom(index + 1); });
        });
    }

    int status() const { return allOpened ? 0 : 1; }
};

}  // namespace

int routeAndExit(const Platform& platform, Log& log, const std::vector<std::string>& links,
                 const std::filesystem::path& rulesFile) {
    FirstRun::ensureConfig(log, rulesFile);
    Batch batch{platform, log, links, platform.caller.opener(), Router(platform, log, rulesFile)};
    batch.routeFrom(0);
    platform.mainLoop.runUntilIdle();
    log.flush(kFlushLimit);
    return batch.status();
}

}  // namespace ferrivane
