// One rule as the settings show it. Pure.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "Ferrivane/platform/Platform.h"
#include "core/Rule.h"

namespace ferrivane::RuleRow {

struct Kind {
    Rule::Kind kind;
    std::string_view label;
};
inline constexpr std::array kinds{Kind{Rule::Kind::url, "URL contains"},
                                  Kind{Rule::Kind::host, "Domain"},
                                  Kind{Rule::Kind::app, "Sent by"}};

std::string_view placeholder(Rule::Kind kind, Desktop desktop);

// The menu that fills the pattern in from a running application.
constexpr bool hasFillInMenu(Rule::Kind kind) {
    return kind == Rule::Kind::app;
}

inline constexpr std::string_view handleToolTip = "Drag to reorder";
inline constexpr std::string_view fillInToolTip = "Fill in from a running app";
inline constexpr std::string_view removeToolTip = "Remove rule";

struct ContextItem {
    enum class Action { moveUp, moveDown, divider, remove };
    Action action = Action::divider;
    std::string_view title{};
    bool isEnabled = true;

    bool operator==(const ContextItem&) const = default;
};

std::vector<ContextItem> contextMenu(bool canMoveUp, bool canMoveDown);

}  // namespace ferrivane::RuleRow
