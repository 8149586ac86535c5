// Which application the desktop uses for web links. Main thread only.
#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Ferrivane/platform/Applications.h"

namespace ferrivane::DefaultBrowser {

inline constexpr std::array<std::string_view, 2> schemes{"http", "https"};

// For desktops that name a handler for a link only.
std::string sampleLink(std::string_view scheme);

std::optional<std::filesystem::path> handler(const Applications& applications,
                                             std::string_view scheme);

// Whether it handles every scheme.
bool isDefault(const Applications& applications, const std::filesystem::path& application);

// The refusals, by scheme.
using Failures = std::map<std::string, PlatformError, std::less<>>;

// Makes it the handler of every scheme, asking for one after the other and only where needed. The
// completion is called exactly once, perhaps before the call returns.
void make(Applications& applications, const std::filesystem::path& application,
          std::function<void(const Failures&)> completion);

}  // namespace ferrivane::DefaultBrowser
