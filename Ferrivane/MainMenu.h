// The application's main menu, there while the settings window is open.
#pragma once

#include <functional>
#include <vector>

#include "Ferrivane/platform/UserInterface.h"

namespace ferrivane::MainMenu {

// The application's own menu, "Edit" for the text fields of the settings, and "Window".
std::vector<Menu> menus();

// A toolkit carries out every other command by itself; where it can quit by itself too, it does.
void install(UserInterface& interface, std::function<void()> settingsAction,
             std::function<void()> quit);

}  // namespace ferrivane::MainMenu
