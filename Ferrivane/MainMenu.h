// The application's main menu, there while the settings window is open.
#pragma once

#include <functional>
#include <vector>

#include "Ferrivane/platform/UserInterface.h"

namespace ferrivane::MainMenu {

// The application's own menu, "Edit" for the text fields of the settings, and "Window".
std::vector<Menu> menus();

// Every command but the settings is the toolkit's own.
void install(UserInterface& interface, const std::function<void()>& settingsAction);

}  // namespace ferrivane::MainMenu
