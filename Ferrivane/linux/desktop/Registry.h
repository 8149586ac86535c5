// The desktop's default applications, as GIO knows them.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace ferrivane::Registry {

std::optional<std::filesystem::path> handler(std::string_view scheme);

}  // namespace ferrivane::Registry
