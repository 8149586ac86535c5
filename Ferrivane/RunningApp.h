// The applications that run now, to choose one as the sender of a link. Main thread only.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "Ferrivane/platform/Applications.h"

namespace ferrivane {

struct RunningApp {
    pid_t id = 0;
    std::string name;  // tells copies of one application apart
    std::string bundleId;
    std::string path;
    std::string matchValue;  // what an "app" rule must say to match this one

    // Sorted by name.
    static std::vector<RunningApp> current(const Applications& applications);

    bool operator==(const RunningApp&) const = default;
};

}  // namespace ferrivane
