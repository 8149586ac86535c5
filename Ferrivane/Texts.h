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
    std::string_view scriptsFolder;      // where it is as a rule
    std::string_view scriptsFolderName;  // what a sentence calls it
    std::string_view saveHelper;         // the save panel's message
    std::string_view inFileManager;
    std::string_view appPlaceholder;  // of an "app" rule's pattern
};

const Texts& textsFor(Desktop desktop);

}  // namespace ferrivane
