// Two facts about the running program.
#pragma once

#include <string>
#include <string_view>

#include "Ferrivane/platform/Applications.h"

namespace ferrivane::AppInfo {

inline constexpr std::string_view bundleIdentifier = "com.hollowmere.ferrivane";
inline constexpr std::string_view urlScheme = "ferrivane";

// "dev" when the bundle names none.
std::string version(const Applications& applications);

// Whether the program runs from a properly installed bundle, so that the desktop can register it.
bool isBundled(const Applications& applications);

}  // namespace ferrivane::AppInfo
