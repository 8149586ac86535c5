#include <gtest/gtest.h>

#include "Ferrivane/Texts.h"

namespace ferrivane {
namespace {

TEST(Texts, EachDesktopHasItsOwnWords) {
    const struct {
        const char* name;
        std::string_view Texts::* text;
        const char* macOS;
        const char* freedesktop;
    } rows[] = {
        {"the agent in the usage", &Texts::usageAgent,
         "run as the background agent (what macOS launches for a link)",
         "run as the background agent (what the desktop starts for a link)"},
        {"the default browser in the usage", &Texts::usageSetDefault,
         "make Ferrivane the default browser (macOS asks you to confirm)",
         "make Ferrivane the default browser"},
        {"a program that is not installed", &Texts::notInstalled,
         "run this from the installed app: "
         "~/Applications/Ferrivane.app/Contents/MacOS/Ferrivane --set-default",
         "run this from the installed program: /usr/bin/Ferrivane --set-default"},
        {"asking for the default browser", &Texts::asking, "asking macOS to make ",
         "asking the desktop to make "},
        {"the end of asking", &Texts::askingEnd, " the default browser… confirm the dialog",
         " the default browser…"},
        {"the sandbox", &Texts::sandboxed, "yes — Chrome reached through Launch Services",
         "yes — Chrome reached through the helper script"},
        {"the scripts folder", &Texts::scriptsFolder, "~/Library/Application Scripts",
         "~/.local/share/ferrivane/scripts"},
        {"the scripts folder in a sentence", &Texts::scriptsFolderName,
         "the Application Scripts folder", "the scripts folder"},
        {"the message of the save panel", &Texts::saveHelper,
         "Click Install Helper to save the script into this folder. macOS only lets Ferrivane "
         "write "
         "here with your confirmation.",
         "Click Install Helper to save the script into this folder. Ferrivane can only write here "
         "with your confirmation."},
        {"the placeholder of a sender", &Texts::appPlaceholder, "bundle id, app name or .app path",
         "desktop id, app name or program path"},
        {"where a file is shown", &Texts::inFileManager, "in Finder", "in the file manager"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(textsFor(Desktop::macOS).*row.text, row.macOS) << row.name;
        EXPECT_EQ(textsFor(Desktop::freedesktop).*row.text, row.freedesktop) << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
