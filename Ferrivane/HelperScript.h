// The script that does outside the sandbox what the sandbox forbids: it starts Chrome with
// arguments and copies Chrome's list of profiles. The person installs it. Nothing is cached. Main
// thread only.
//
// Its commands: "open" EXECUTABLE SWITCH…, "launch" APPLICATION SWITCH…, "profiles" DESTINATION.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Ferrivane/platform/Platform.h"
#include "core/ChromeProfile.h"
#include "core/ChromeProfiles.h"
#include "core/Log.h"

namespace ferrivane::HelperScript {

inline constexpr std::string_view fileName = "ferrivane-helper.sh";

enum class State {
    notNeeded,  // not sandboxed
    missing,    // no executable file of this name in the folder
    outdated,   // it differs from the bundled one
    ready,
};

struct HelperError {
    enum class Kind {
        notInstalled,
        wrongFolder,
        noBundledScript,
        cancelled,
        profiles,  // what the script copied is no catalogue
        platform,  // the system's own words
    };

    Kind kind = Kind::cancelled;
    std::string text{};  // the path, the folder, or the others' words
    Desktop desktop = Desktop::macOS;

    std::string description() const;

    bool operator==(const HelperError&) const = default;
};

using Result = std::expected<void, HelperError>;
using Profiles = std::expected<std::vector<ChromeProfile>, HelperError>;

bool isInstalled(const Platform& platform);
State state(const Platform& platform);

// Asks the person where to save the bundled script, and saves it there. Every completion here is
// called exactly once, perhaps before the call returns.
void install(const Platform& platform, Log& log, std::function<void(Result)> completion);

// Shows both folders in the file manager, for the person to copy the script by hand.
void revealForManualInstall(const Platform& platform, Log& log);

void run(const Platform& platform, const std::vector<std::string>& arguments,
         const std::optional<std::string>& activationToken, std::function<void(Result)> completion);

// Chrome's catalogue, copied out by the script. The copy is gone once the completion returns.
void loadProfiles(const Platform& platform, std::function<void(Profiles)> completion);

}  // namespace ferrivane::HelperScript
