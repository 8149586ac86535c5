#include "Ferrivane/Texts.h"

namespace ferrivane {
namespace {

constexpr Texts kMacOS{
    .usageAgent = "run as the background agent (what macOS launches for a link)",
    .usageSetDefault = "make Ferrivane the default browser (macOS asks you to confirm)",
    .notInstalled =
        "run this from the installed app: "
        "~/Applications/Ferrivane.app/Contents/MacOS/Ferrivane --set-default",
    .asking = "asking macOS to make ",
    .askingEnd = " the default browser… confirm the dialog",
    .sandboxed = "yes — Chrome reached through Launch Services",
    .scriptsFolder = "~/Library/Application Scripts",
    .scriptsFolderName = "the Application Scripts folder",
    .saveHelper =
        "Click Install Helper to save the script into this folder. "
        "macOS only lets Ferrivane write here with your confirmation.",
    .inFileManager = "in Finder",
    .appPlaceholder = "bundle id, app name or .app path",
};

constexpr Texts kFreedesktop{
    .usageAgent = "run as the background agent (what the desktop starts for a link)",
    .usageSetDefault = "make Ferrivane the default browser",
    .notInstalled = "run this from the installed program: /usr/bin/Ferrivane --set-default",
    .asking = "asking the desktop to make ",
    .askingEnd = " the default browser…",
    .sandboxed = "yes — Chrome reached through the helper script",
    .scriptsFolder = "~/.local/share/ferrivane/scripts",
    .scriptsFolderName = "the scripts folder",
    .saveHelper =
        "Click Install Helper to save the script into this folder. "
        "Ferrivane can only write here with your confirmation.",
    .inFileManager = "in the file manager",
    .appPlaceholder = "desktop id, app name or program path",
};

}  // namespace

const Texts& textsFor(Desktop desktop) {
    return desktop == Desktop::macOS ? kMacOS : kFreedesktop;
}

}  // namespace ferrivane
