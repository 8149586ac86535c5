// Prints a line when it watches, and then the moment (CLOCK_MONOTONIC, ns) when the middle of the
// screen is no longer black: somebody's window is there and painted.
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include <xcb/xcb.h>

int main() {
    xcb_connection_t* const display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(display) != 0) return 1;
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    std::cout << "watching\n" << std::flush;
    for (;;) {
        const auto cookie =
            xcb_get_image(display, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root,
                          static_cast<std::int16_t>(screen->width_in_pixels / 2),
                          static_cast<std::int16_t>(screen->height_in_pixels / 2), 1, 1, ~0U);
        xcb_get_image_reply_t* const image = xcb_get_image_reply(display, cookie, nullptr);
        if (image == nullptr) return 1;
        const std::uint8_t* const pixel = xcb_get_image_data(image);
        const bool isBlack = pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0;
        std::free(image);
        if (!isBlack) break;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::cout << std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() << '\n'
              << std::flush;
    xcb_disconnect(display);
    return 0;
}
