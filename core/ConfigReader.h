// Decodes the text of rules.json (docs/FORMATS.md).
#pragma once

#include <expected>
#include <string_view>

#include "core/Config.h"

namespace ferrivane {

// UTF-8, with or without a byte-order mark. Of equal keys in one object the last one counts. Takes
// memory in proportion to the text, however deeply it is nested. Errors are of kind syntax or
// value.
std::expected<Config, ConfigError> readConfig(std::string_view json);

}  // namespace ferrivane
