#include "Ferrivane/linux/desktop/DisplayWatch.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include <glib-unix.h>
#include <xcb/xcb.h>

#include "Ferrivane/linux/DisplaySockets.h"
#include "Ferrivane/linux/Environment.h"

namespace ferrivane::DisplayWatch {
namespace {

// The link that the process may have been started for goes first.
constexpr guint kDelayMilliseconds = 500;

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

struct Watch {
    std::function<void()> ended;
    FileDescriptor compositor;
    std::unique_ptr<xcb_connection_t, Disconnect> server;
};

Watch& watch() {
    static Watch held;
    return held;
}

// What the compositor may have to say is not read; it says nothing unasked.
gboolean compositorEnded(gint, GIOCondition, gpointer) {
    watch().ended();
    return G_SOURCE_REMOVE;
}

gboolean serverSpoke(gint, GIOCondition, gpointer) {
    xcb_connection_t* const server = watch().server.get();
    // Unasked, as when the keyboard changes; the server would keep what nobody reads.
    while (const std::unique_ptr<xcb_generic_event_t, Free> event{xcb_poll_for_event(server)}) {
    }
    if (xcb_connection_has_error(server) == 0) return G_SOURCE_CONTINUE;
    watch().ended();
    return G_SOURCE_REMOVE;
}

// A display that a remote login forwards is left alone: that login would wait for us at its end.
bool isOfThisMachine(const std::string& display) {
    return display.starts_with(':') || display.starts_with("unix:") || display.starts_with('/');
}

// A connection to the server of which nothing is asked, not even admission.
FileDescriptor connectPlainly() {
    char* host = nullptr;
    int number = 0;
    if (xcb_parse_display(nullptr, &host, &number, nullptr) == 0) return {};
    std::free(host);
    return connectToX(number);
}

bool hasHungUp(const FileDescriptor& connection) {
    GPollFD polled{.fd = connection.get(), .events = 0, .revents = 0};
    return g_poll(&polled, 1, 0) > 0 && (polled.revents & G_IO_HUP) != 0;
}

gboolean connectToServer(gpointer) {
    const FileDescriptor plain = connectPlainly();
    watch().server.reset(xcb_connect(nullptr, nullptr));
    xcb_connection_t* const server = watch().server.get();
    if (xcb_connection_has_error(server) == 0) {
        g_unix_fd_add(xcb_get_file_descriptor(server), G_IO_IN, serverSpoke, nullptr);
        return G_SOURCE_REMOVE;
    }
    watch().server.reset();
    // It ended just now, and was not absent, nor has it refused us.
    if (hasHungUp(plain)) watch().ended();
    return G_SOURCE_REMOVE;
}

}  // namespace

void start(std::function<void()> ended) {
    watch().ended = std::move(ended);
    // With a compositor there is no look at X: its X server is started when somebody connects to
    // it, and would be kept.
    watch().compositor = connectToWayland();
    if (watch().compositor) {
        g_unix_fd_add(watch().compositor.get(), G_IO_HUP, compositorEnded, nullptr);
    } else if (isOfThisMachine(environment("DISPLAY"))) {
        g_timeout_add(kDelayMilliseconds, connectToServer, nullptr);
    }
}

}  // namespace ferrivane::DisplayWatch
