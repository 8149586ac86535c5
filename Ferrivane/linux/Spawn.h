// Starts programs that live on their own.
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace ferrivane {

// Runs `command` as a child in a session of its own, with the standard streams on the null device,
// no other descriptor of ours, no signal held back or ignored, and XDG_ACTIVATION_TOKEN set or
// unset. The error is the system's number; E2BIG means that an argument is too long.
std::expected<pid_t, int> spawnDetached(const std::vector<std::string>& command,
                                        const std::optional<std::string>& activationToken);

}  // namespace ferrivane
