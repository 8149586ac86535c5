#include "core/Opener.h"

namespace ferrivane {

std::string Opener::description() const {
    if (name && bundleId) return *name + " (" + *bundleId + ")";
    if (name) return *name;
    if (bundleId) return *bundleId;
    return path.value_or("unknown app");
}

}  // namespace ferrivane
