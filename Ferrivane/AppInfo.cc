#include "Ferrivane/AppInfo.h"

namespace ferrivane::AppInfo {

std::string version(const Applications& applications) {
    return applications.ownBundle().version.value_or("dev");
}

bool isBundled(const Applications& applications) {
    return applications.ownBundle().identifier == bundleIdentifier;
}

}  // namespace ferrivane::AppInfo
