// The compositor's socket, for whoever wants to know no more than whether it is there.
#pragma once

#include <cstring>
#include <filesystem>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

#include "Ferrivane/linux/Environment.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {

// A connection to the compositor at $WAYLAND_DISPLAY, made without waiting; invalid when there is
// none.
inline FileDescriptor connectToWayland() {
    const std::string display = environment("WAYLAND_DISPLAY");
    const std::string path = std::filesystem::path(environment("XDG_RUNTIME_DIR")) / display;
    sockaddr_un address{};
    if (display.empty() || path.size() >= sizeof address.sun_path) return {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket &&
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        socket.reset();
    }
    return socket;
}

}  // namespace ferrivane
