// Which application the desktop uses for web links.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>

#include "Ferrivane/platform/Applications.h"

namespace ferrivane::DefaultBrowser {

inline constexpr std::array<std::string_view, 2> schemes{"http", "https"};

std::optional<std::filesystem::path> handler(const Applications& applications,
                                             std::string_view scheme);

}  // namespace ferrivane::DefaultBrowser
