// The sockets of compositor and X server, for whoever wants to know no more than whether they are
// there. They are connected to without waiting; the result is invalid when nobody listens.
#pragma once

#include <cstring>
#include <filesystem>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

#include "Ferrivane/linux/Environment.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {

inline FileDescriptor connectToDisplaySocket(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) return {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket &&
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        socket.reset();
    }
    return socket;
}

// At $WAYLAND_DISPLAY.
inline FileDescriptor connectToWayland() {
    const std::string display = environment("WAYLAND_DISPLAY");
    if (display.empty()) return {};
    return connectToDisplaySocket(std::filesystem::path(environment("XDG_RUNTIME_DIR")) / display);
}

// Display `number` of this machine; the path is that of X(7), and the server's default.
inline FileDescriptor connectToX(int number) {
    return connectToDisplaySocket("/tmp/.X11-unix/X" + std::to_string(number));
}

}  // namespace ferrivane
