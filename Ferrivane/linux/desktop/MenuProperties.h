// What com.canonical.dbusmenu tells of one item of a menu.
#pragma once

#include <utility>
#include <vector>

#include "Ferrivane/linux/desktop/GObjects.h"
#include "Ferrivane/platform/Menu.h"

namespace ferrivane {

using MenuProperties = std::vector<std::pair<const char*, VariantPointer>>;

// Without an item: of the menu itself.
MenuProperties menuProperties(const MenuItem* item);

}  // namespace ferrivane
