// The icon in the panel: org.kde.StatusNotifierItem (freedesktop.org, Status Notifier Item).
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Ferrivane/platform/Menu.h"

namespace ferrivane::StatusNotifier {

// Shows the item in every panel that is there or comes later, in the place of one shown before.
// Without a session bus nothing happens.
void show(const StatusItem& item, std::function<void(Command)> perform);

void remove();

// What the panel gave with the last click, so that a window may come to the front (Wayland's
// xdg-activation); once.
std::optional<std::string> takeActivationToken();

}  // namespace ferrivane::StatusNotifier
