// The main menu at the top of the settings window.
#pragma once

#include <QMainWindow>
#include <functional>
#include <vector>

#include "Ferrivane/platform/Menu.h"

namespace ferrivane {

// What the toolkit cannot do goes to `perform`. `about` shows the application's own description.
void installMenuBar(QMainWindow& window, const std::vector<Menu>& menus,
                    const std::function<void(Command)>& perform,
                    const std::function<void()>& about);

}  // namespace ferrivane
