#include "Ferrivane/Texts.h"

namespace ferrivane {
namespace {

constexpr Texts kMacOS{
    .usageAgent = "run as the background agent (what macOS launches for a link)",
    .usageSetDefault = "make Ferrivane the default browser (macOS asks you to confirm)",
    .sandboxed = "yes — Chrome reached through Launch Services",
};

constexpr Texts kFreedesktop{
    .usageAgent = "run as the background agent (what the desktop starts for a link)",
    .usageSetDefault = "make Ferrivane the default browser",
    .sandboxed = "yes — Chrome reached through the helper script",
};

}  // namespace

const Texts& textsFor(Desktop desktop) {
    return desktop == Desktop::macOS ? kMacOS : kFreedesktop;
}

}  // namespace ferrivane
