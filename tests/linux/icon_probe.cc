// The icon without the agent. Reads orders, one a line: "show", "remove", "login", "no login"; each
// is followed by "done". Prints "chosen N" for a command, with the panel's token if there is one.
// Ends with its standard input.
#include <chrono>
#include <iostream>
#include <string>

#include <poll.h>
#include <unistd.h>

#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/LinuxUserInterface.h"

namespace {

using namespace ferrivane;

StatusItem item() {
    return {.symbol = "",
            .accessibilityDescription = "Spoken",
            .toolTip = "Tip",
            .items = {{Command::redo, "_Re_do", "Z"}, {}, {Command::copy, "Copy"}}};
}

class Orders {
  public:
    Orders(EventLoop& loop, UserInterface& interface) : loop_(loop), interface_(interface) {}

    void follow() {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        while (::poll(&input, 1, 0) > 0) {
            char character = 0;
            if (::read(STDIN_FILENO, &character, 1) != 1) return loop_.stop();
            if (character != '\n') {
                line_ += character;
                continue;
            }
            perform();
            line_.clear();
            std::cout << "done\n" << std::flush;
        }
        loop_.after(std::chrono::milliseconds(5), [this] { follow(); });
    }

  private:
    void perform() {
        if (line_ == "show") {
            interface_.showStatusItem(item(), [this](Command command) {
                const auto token = desktopServices()->takeStatusItemToken();
                std::cout << "chosen " << static_cast<int>(command) << (token ? " " + *token : "")
                          << '\n'
                          << std::flush;
                if (command == Command::copy) interface_.removeStatusItem();
            });
        } else if (line_ == "remove") {
            interface_.removeStatusItem();
        } else {
            interface_.setStartsAtLogin(line_ == "login");
        }
    }

    EventLoop& loop_;
    UserInterface& interface_;
    std::string line_;
};

}  // namespace

int main() {
    EventLoop loop;
    attachTo(*desktopServices(), loop);
    LinuxPreferences preferences;
    LinuxUserInterface interface(loop, preferences);
    Orders orders(loop, interface);
    orders.follow();
    loop.run();
    return 0;
}
