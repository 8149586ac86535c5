#include "Ferrivane/linux/desktop/Windows.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ranges>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

namespace ferrivane::Windows {
namespace {

constexpr const char* kSupportingWindow = "_NET_SUPPORTING_WM_CHECK";

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template<typename T>
using Reply = std::unique_ptr<T, Free>;

// A connection to the X server and what is asked of it.
class Server {
  public:
    Server() : connection_(xcb_connect(nullptr, &screen_)) {
        if (!isConnected()) return;
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_.get()));
        for (int i = 0; i < screen_ && screens.rem > 0; ++i) xcb_screen_next(&screens);
        if (screens.rem > 0) root_ = screens.data->root;
    }

    bool isConnected() const { return xcb_connection_has_error(connection_.get()) == 0; }

    std::vector<std::uint32_t> numbers(xcb_window_t window, const char* property,
                                       xcb_atom_t type) const {
        const auto reply = get(window, atom(property), type);
        std::vector<std::uint32_t> values;
        if (reply && reply->format == 32 && reply->value_len > 0) {
            values.resize(reply->value_len);
            std::memcpy(values.data(), xcb_get_property_value(reply.get()),
                        values.size() * sizeof values[0]);
        }
        return values;
    }

    std::string text(xcb_window_t window, xcb_atom_t property) const {
        const auto reply = get(window, property, XCB_ATOM_STRING);
        if (!reply || reply->format != 8) return {};
        const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
        return {bytes, reply->value_len};
    }

    xcb_window_t root() const { return root_; }

    // What one that ended has left behind on the root window is not believed: the window that it
    // named as its own has ended with it.
    bool hasWindowManager() const {
        const auto named = numbers(root_, kSupportingWindow, XCB_ATOM_WINDOW);
        return !named.empty() && numbers(named[0], kSupportingWindow, XCB_ATOM_WINDOW) == named;
    }

    std::optional<pid_t> processOf(xcb_window_t window) const {
        const auto pid = numbers(window, "_NET_WM_PID", XCB_ATOM_CARDINAL);
        return pid.empty() ? std::nullopt : std::optional(static_cast<pid_t>(pid[0]));
    }

    void activate(xcb_window_t window) const {
        constexpr std::uint32_t kSourceIsPager = 2;  // a request of the user, through us
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom("_NET_ACTIVE_WINDOW");
        event.data.data32[0] = kSourceIsPager;
        event.data.data32[1] = currentTime();
        xcb_send_event(connection_.get(), 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&event));
        // Wait until the server has taken it.
        Reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus_reply(
            connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
    }

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    xcb_atom_t atom(std::string_view name) const {
        const auto cookie = xcb_intern_atom(connection_.get(), 0,
                                            static_cast<std::uint16_t>(name.size()), name.data());
        const Reply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection_.get(), cookie, nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }

    Reply<xcb_get_property_reply_t> get(xcb_window_t window, xcb_atom_t property,
                                        xcb_atom_t type) const {
        constexpr std::uint32_t kLongest = 65536;  // in units of four bytes
        const auto cookie =
            xcb_get_property(connection_.get(), 0, window, property, type, 0, kLongest);
        return Reply<xcb_get_property_reply_t>(
            xcb_get_property_reply(connection_.get(), cookie, nullptr));
    }

    // The server tells the time when a property changes.
    xcb_timestamp_t currentTime() const {
        xcb_connection_t* const connection = connection_.get();
        const xcb_window_t window = xcb_generate_id(connection);
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &mask);
        xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME,
                            XCB_ATOM_STRING, 8, 0, nullptr);
        xcb_flush(connection);
        xcb_timestamp_t time = XCB_CURRENT_TIME;
        while (const Reply<xcb_generic_event_t> event{xcb_wait_for_event(connection)}) {
            if (event->response_type == 0) break;  // an error: no time will come
            if ((event->response_type & 0x7F) != XCB_PROPERTY_NOTIFY) continue;
            time = reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
            break;
        }
        xcb_destroy_window(connection, window);
        return time;
    }

    int screen_ = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

// WM_CLASS is "instance NUL class NUL".
std::optional<std::string> applicationClass(const Server& server, xcb_window_t window) {
    const std::string both = server.text(window, XCB_ATOM_WM_CLASS);
    const std::size_t nul = both.find('\0');
    if (nul == std::string::npos) return std::nullopt;
    const std::string name = both.c_str() + nul + 1;
    return name.empty() ? std::nullopt : std::optional(name);
}

}  // namespace

bool canConnect() {
    return Server().isConnected();
}

std::optional<DesktopServices::Window> active() {
    const Server server;
    if (!server.isConnected() || !server.hasWindowManager()) return std::nullopt;
    const auto window = server.numbers(server.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    if (window.empty()) return std::nullopt;
    if (window[0] == XCB_WINDOW_NONE) return DesktopServices::Window();
    return DesktopServices::Window{server.processOf(window[0]),
                                   applicationClass(server, window[0])};
}

std::vector<pid_t> processes() {
    const Server server;
    std::vector<pid_t> result;
    if (!server.isConnected() || !server.hasWindowManager()) return result;
    for (const xcb_window_t window :
         server.numbers(server.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW)) {
        if (const auto process = server.processOf(window)) result.push_back(*process);
    }
    return result;
}

bool activateTopmost(pid_t process) {
    const Server server;
    if (!server.isConnected() || !server.hasWindowManager()) return false;
    // From the bottom to the top.
    const auto windows =
        server.numbers(server.root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    for (const xcb_window_t window : std::views::reverse(windows)) {
        if (server.processOf(window) == process) {
            server.activate(window);
            return true;
        }
    }
    return false;
}

}  // namespace ferrivane::Windows
