// The texts that name the desktop and would be untrue on another one. All others stand where they
// are used.
#pragma once

#include <string_view>

#include "Ferrivane/platform/Platform.h"

namespace ferrivane {

struct Texts {
    std::string_view usageAgent;
    std::string_view usageSetDefault;
    std::string_view notInstalled;
    std::string_view asking;     // in front of an application's file name
    std::string_view askingEnd;  // behind it
    std::string_view sandboxed;
};

const Texts& textsFor(Desktop desktop);

}  // namespace ferrivane
