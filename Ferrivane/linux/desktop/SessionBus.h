// Questions to the session's D-Bus and to the user's systemd. No bus is ever started.
#pragma once

#include <optional>
#include <string_view>

#include <sys/types.h>

namespace ferrivane::SessionBus {

std::optional<pid_t> nameOwner(std::string_view name);

// With the processes of its session. By org.freedesktop.systemd1.Manager.StartTransientUnit; a
// refusal changes nothing.
void moveToOwnScope(pid_t process);

}  // namespace ferrivane::SessionBus
