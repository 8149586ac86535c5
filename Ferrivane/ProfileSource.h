// Chrome's profile catalogue, read directly or, in a sandbox, through the helper script.
#pragma once

#include <expected>
#include <functional>
#include <string>
#include <vector>

#include "Ferrivane/platform/Platform.h"
#include "core/ChromeProfile.h"

namespace ferrivane::ProfileSource {

// The error is the description of what went wrong.
using Profiles = std::expected<std::vector<ChromeProfile>, std::string>;

// The completion is called exactly once, on the main thread: before this returns outside a sandbox,
// always later in one. Main thread only.
void load(const Platform& platform, std::function<void(Profiles)> completion);

}  // namespace ferrivane::ProfileSource
