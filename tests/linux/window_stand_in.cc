// An X11 application: shows its windows one after another, prints "shown" for each, and ends when
// its standard input does.
//
//   window_stand_in [--anonymous|--of-parent] CLASS…
//
// Anonymous windows do not tell their process; others may tell that they are its parent's.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

class Application {
  public:
    Application() : server_(xcb_connect(nullptr, nullptr)) {}
    ~Application() { xcb_disconnect(server_); }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    bool isConnected() const { return xcb_connection_has_error(server_) == 0; }

    void show(const std::string& name, std::uint32_t process) {
        const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(server_)).data;
        const xcb_window_t window = xcb_generate_id(server_);
        const std::uint32_t events = XCB_EVENT_MASK_EXPOSURE;
        xcb_create_window(server_, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_EVENT_MASK,
                          &events);
        if (process != 0) set(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &process);
        const std::string instanceAndClass = "instance" + ('\0' + name) + '\0';
        set(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, instanceAndClass.size(),
            instanceAndClass.data());
        set(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, name.size(), name.data());
        xcb_map_window(server_, window);
        xcb_flush(server_);
    }

    // Until a window has become visible, or the standard input has ended; false in that case.
    bool waitForWindow() {
        for (;;) {
            while (xcb_generic_event_t* const event = xcb_poll_for_event(server_)) {
                const bool isVisible = (event->response_type & 0x7F) == XCB_EXPOSE;
                std::free(event);
                if (isVisible) return true;
            }
            pollfd inputs[] = {{STDIN_FILENO, POLLIN, 0},
                               {xcb_get_file_descriptor(server_), POLLIN, 0}};
            ::poll(inputs, 2, -1);
            if (inputs[0].revents != 0 || !isConnected()) return false;
        }
    }

  private:
    xcb_atom_t atom(const std::string& name) {
        const auto length = static_cast<std::uint16_t>(name.size());
        xcb_intern_atom_reply_t* const reply = xcb_intern_atom_reply(
            server_, xcb_intern_atom(server_, 0, length, name.data()), nullptr);
        const xcb_atom_t atom = reply->atom;
        std::free(reply);
        return atom;
    }
    void set(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::uint8_t format,
             std::size_t length, const void* data) {
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window, property, type, format,
                            static_cast<std::uint32_t>(length), data);
    }

    xcb_connection_t* server_;
};

}  // namespace

int main(int count, char** values) {
    Application application;
    if (!application.isConnected()) return 1;
    const std::string option = count > 1 ? values[1] : "";
    const bool hasOption = option.starts_with("--");
    const pid_t process =
        option == "--anonymous" ? 0 : (option == "--of-parent" ? ::getppid() : ::getpid());
    for (int i = hasOption ? 2 : 1; i < count; ++i) {
        application.show(values[i], static_cast<std::uint32_t>(process));
        if (!application.waitForWindow()) return 0;
        std::puts("shown");
        std::fflush(stdout);
    }
    while (application.waitForWindow()) {
    }
    return 0;
}
