#include "Ferrivane/RuleRow.h"

#include "Ferrivane/Texts.h"

namespace ferrivane::RuleRow {

std::string_view placeholder(Rule::Kind kind, Desktop desktop) {
    switch (kind) {
        case Rule::Kind::url:
            return "any part of the link, e.g. example.com/team";
        case Rule::Kind::host:
            return "example.com — also matches its subdomains";
        case Rule::Kind::app:
            return textsFor(desktop).appPlaceholder;
    }
    return {};
}

std::vector<ContextItem> contextMenu(bool canMoveUp, bool canMoveDown) {
    using enum ContextItem::Action;
    return {{moveUp, "Move Up", canMoveUp},
            {moveDown, "Move Down", canMoveDown},
            {divider},
            {remove, "Remove"}};
}

}  // namespace ferrivane::RuleRow
