// Decides which profile a link opens in. Pure computation, the same for real links, the command
// line's test and the tester in the settings; callable from any thread.
#pragma once

#include <optional>
#include <string_view>

#include "core/Config.h"
#include "core/Decision.h"
#include "core/Opener.h"

namespace ferrivane::Matcher {

// The link is the text that arrived, not a parsed URL. The first rule that matches wins.
Decision decide(std::string_view url, const std::optional<Opener>& opener, const Config& config);

bool matches(const Rule& rule, std::string_view url, const std::optional<Opener>& opener);

}  // namespace ferrivane::Matcher
