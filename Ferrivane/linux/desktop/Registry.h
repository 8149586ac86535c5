// The desktop's default applications, as GIO knows them.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ferrivane::Registry {

std::optional<std::filesystem::path> handler(std::string_view scheme);

// Writes it into the person's mimeapps.list. The entry's id is without ".desktop".
std::expected<void, std::string> setHandler(const std::string& id, std::string_view scheme);

// The list of a desktop in use (freedesktop.org, Association between MIME types and applications)
// that names the scheme's present handler and counts before mimeapps.list.
std::optional<std::filesystem::path> overridingList(std::string_view scheme);

}  // namespace ferrivane::Registry
