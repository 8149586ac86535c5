// Menus as data: a shell draws them with its toolkit.
#pragma once

#include <string>
#include <vector>

namespace ferrivane {

enum class Command {
    separator,
    about,
    settings,
    editRules,
    showLog,
    hide,
    quit,
    undo,
    redo,
    cut,
    copy,
    paste,
    selectAll,
    close,
    minimize,
};

struct MenuItem {
    Command command = Command::separator;
    std::string title{};
    // One character, pressed with Command on macOS and with Control elsewhere; an upper-case one
    // with Shift too. Empty without one.
    std::string key{};

    bool operator==(const MenuItem&) const = default;
};

struct Menu {
    std::string title;
    std::vector<MenuItem> items;

    bool operator==(const Menu&) const = default;
};

// An icon among those of the system, with its menu.
struct StatusItem {
    std::string symbol;  // by its name on macOS
    std::string accessibilityDescription;
    std::string toolTip;
    std::vector<MenuItem> items;

    bool operator==(const StatusItem&) const = default;
};

}  // namespace ferrivane
