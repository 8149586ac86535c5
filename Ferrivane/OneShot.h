// A process that was started with links: routes them, one after another, and ends. It never becomes
// the application. Main thread only.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Ferrivane/platform/Platform.h"
#include "core/Config.h"
#include "core/Log.h"

namespace ferrivane {

// The exit status: 0 when every link was opened, 1 when one failed. The caller gets it as soon as
// the last outcome is in the log, at the latest two seconds after it is known; what is still to be
// done for Chrome is done before this returns.
int routeAndExit(const Platform& platform, Log& log, const std::vector<std::string>& links,
                 const std::filesystem::path& rulesFile = Config::fileURL());

}  // namespace ferrivane
