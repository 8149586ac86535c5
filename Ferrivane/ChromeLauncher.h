// Opens one link in Google Chrome, in a chosen profile when one is given. Stateless; main thread.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Ferrivane/platform/Platform.h"
#include "core/Log.h"

namespace ferrivane::ChromeLauncher {

inline constexpr std::string_view chromeBundleIdentifier = "com.google.Chrome";
inline constexpr std::string_view fallbackLocation = "/Applications/Google Chrome.app";

struct LaunchError {
    enum class Kind {
        noExecutable,
        malformedURL,
        chromeNotFound,
        platform,  // the words of the desktop, or of the helper script
    };

    Kind kind = Kind::chromeNotFound;
    std::string text{};  // the application's path, the link, or those words

    std::string description() const;

    bool operator==(const LaunchError&) const = default;
};

struct Request {
    std::string url;
    std::optional<std::string>
        profileDirectory{};  // one of the catalogue's; absent lets Chrome choose
    std::optional<std::string> activationToken{};
};

// A line for the log that says how the link was handed over, or why it was not.
using Outcome = std::expected<std::string, LaunchError>;

// The completion is called exactly once, on the main thread, possibly before this returns.
//
// A text that Chrome would take for a switch, or with a NUL in it, is refused as no URL on every
// route: whoever can hand us a text could otherwise run a command.
// Any other text goes to Chrome unchanged.
void open(const Platform& platform, Log& log, const Request& request,
          std::function<void(Outcome)> completion);

// Where Chrome is installed, asked anew at every call.
std::optional<std::filesystem::path> chromeAppURL(
    const Applications& applications, const std::filesystem::path& fallback = fallbackLocation);

// Whether the process runs in the App Sandbox; found out once. A desktop may know of other
// sandboxes: Platform says whether it is one.
bool isSandboxed();
// The same, found out now: the variable APP_SANDBOX_CONTAINER_ID is set, also when it is empty.
bool sandboxMarkerPresent();

// Whether Chrome would take a link for a switch: "-" behind ASCII white space.
bool isSwitch(std::string_view url);

// Chrome's switches for one link: the profile's, if any, then the link as it is.
std::vector<std::string> arguments(const std::string& url,
                                   const std::optional<std::string>& profileDirectory);

}  // namespace ferrivane::ChromeLauncher
