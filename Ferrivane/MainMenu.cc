#include "Ferrivane/MainMenu.h"

#include <utility>

namespace ferrivane::MainMenu {

std::vector<Menu> menus() {
    return {{.title = "Ferrivane",
             .items = {{Command::about, "About Ferrivane"},
                       {},
                       {Command::settings, "Settings…", ","},
                       {},
                       {Command::hide, "Hide Ferrivane", "h"},
                       {Command::quit, "Quit Ferrivane", "q"}}},
            {.title = "Edit",
             .items = {{Command::undo, "Undo", "z"},
                       {Command::redo, "Redo", "Z"},
                       {},
                       {Command::cut, "Cut", "x"},
                       {Command::copy, "Copy", "c"},
                       {Command::paste, "Paste", "v"},
                       {Command::selectAll, "Select All", "a"}}},
            {.title = "Window",
             .items = {{Command::close, "Close", "w"}, {Command::minimize, "Minimize", "m"}}}};
}

void install(UserInterface& interface, std::function<void()> settingsAction,
             std::function<void()> quit) {
    interface.installMainMenu(menus(), [settingsAction = std::move(settingsAction),
                                        quit = std::move(quit)](Command command) {
        if (command == Command::settings) settingsAction();
        if (command == Command::quit) quit();
    });
}

}  // namespace ferrivane::MainMenu
