// The icon in the panel: org.kde.StatusNotifierItem (freedesktop.org, Status Notifier Item).
#pragma once

#include <functional>

#include "Ferrivane/platform/Menu.h"

namespace ferrivane::StatusNotifier {

// Shows the item in every panel that is there or comes later, in the place of one shown before.
// Without a session bus nothing happens.
void show(const StatusItem& item, std::function<void(Command)> perform);

void remove();

}  // namespace ferrivane::StatusNotifier
