#import "Ferrivane/macos/RuleContextMenu.h"

#include <optional>

#include "Ferrivane/RuleRow.h"
#import "Ferrivane/macos/Conversions.h"

using namespace ferrivane;
using Action = RuleRow::ContextItem::Action;

NSString* const FVMoveUpKey = @"\uF700";
NSString* const FVMoveDownKey = @"\uF701";
static_assert(NSUpArrowFunctionKey == 0xF700 && NSDownArrowFunctionKey == 0xF701);

@implementation FVRuleContextMenu {
    SettingsView* _view;
    std::optional<Uuid> _rule;
}

- (instancetype)initWithView:(SettingsView&)view {
    self = [super initWithTitle:@""];
    if (!self) return nil;
    _view = &view;
    self.autoenablesItems = NO;
    return self;
}

- (void)fillForRow:(NSInteger)row {
    [self removeAllItems];
    const auto& rules = _view->store().config().rules;
    if (row < 0 || row >= std::ssize(rules)) return;
    const auto index = std::size_t(row);
    _rule = rules[index].id;
    for (const auto& item :
         RuleRow::contextMenu(_view->canMoveUp(index), _view->canMoveDown(index))) {
        if (item.action == Action::divider) {
            [self addItem:NSMenuItem.separatorItem];
            continue;
        }
        NSMenuItem* added = [self addItemWithTitle:nsString(item.title)
                                            action:@selector(choose:)
                                     keyEquivalent:@""];
        if (item.action == Action::moveUp) added.keyEquivalent = FVMoveUpKey;
        if (item.action == Action::moveDown) added.keyEquivalent = FVMoveDownKey;
        added.keyEquivalentModifierMask = FVMoveModifiers;
        added.target = self;
        added.tag = NSInteger(item.action);
        added.enabled = item.isEnabled;
    }
}

- (void)choose:(NSMenuItem*)item {
    switch (Action(item.tag)) {
        case Action::moveUp:
            return _view->move(*_rule, -1);
        case Action::moveDown:
            return _view->move(*_rule, 1);
        case Action::remove:
            return _view->removeRule(*_rule);
        case Action::divider:
            return;
    }
}

@end
