#include "Ferrivane/FirstRun.h"

#include "core/Config.h"

namespace ferrivane::FirstRun {

void ensureConfig(Log& log, const std::filesystem::path& rulesFile) {
    const auto created = Config::ensureExists(rulesFile);
    if (!created) {
        log.error("cannot create config: " + created.error().description());
    } else if (*created) {
        log.info("created starter config at " + rulesFile.string());
    }
}

}  // namespace ferrivane::FirstRun
