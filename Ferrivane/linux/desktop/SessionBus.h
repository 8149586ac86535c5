// The session's D-Bus, and questions to it and to the user's systemd. No bus is ever started.
#pragma once

#include <optional>
#include <string_view>

#include <gio/gio.h>
#include <sys/types.h>

#include "Ferrivane/linux/desktop/GObjects.h"

namespace ferrivane::SessionBus {

// Made at the first call that finds a bus, and kept; null without one.
GDBusConnection* connection();

// One more, for what is to look like a program of its own; null without a bus.
ObjectPointer<GDBusConnection> another();

struct Method {
    const char* destination;
    const char* path;
    const char* interface;
    const char* name;
};

// The answer; none when there is none in time. Nor without file descriptors to wait with, where
// GLib would end the process. Takes over `arguments` if they are floating.
VariantPointer call(GDBusConnection* bus, const Method& method, GVariant* arguments,
                    GDBusCallFlags flags, int timeoutMilliseconds);

std::optional<pid_t> nameOwner(std::string_view name);

// With the processes of its session. By org.freedesktop.systemd1.Manager.StartTransientUnit; a
// refusal changes nothing.
void moveToOwnScope(pid_t process);

}  // namespace ferrivane::SessionBus
