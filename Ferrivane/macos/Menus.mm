#import "Ferrivane/macos/Menus.h"

#include <utility>

#import "Ferrivane/macos/Conversions.h"

@implementation FVMenuTarget {
    ferrivane::UserInterface::Perform _perform;
}

- (instancetype)initWithPerform:(ferrivane::UserInterface::Perform)perform {
    if (self = [super init]) _perform = std::move(perform);
    return self;
}

- (void)performItem:(NSMenuItem*)item {
    _perform(static_cast<ferrivane::Command>(item.tag));
}

@end

namespace ferrivane {
namespace {

// What AppKit carries out itself, wherever the focus is; null for ours.
SEL standardAction(Command command) {
    switch (command) {
        case Command::about:
            return @selector(orderFrontStandardAboutPanel:);
        case Command::hide:
            return @selector(hide:);
        case Command::quit:
            return @selector(terminate:);
        case Command::undo:
            return @selector(undo:);
        case Command::redo:
            return @selector(redo:);
        case Command::cut:
            return @selector(cut:);
        case Command::copy:
            return @selector(copy:);
        case Command::paste:
            return @selector(paste:);
        case Command::selectAll:
            return @selector(selectAll:);
        case Command::close:
            return @selector(performClose:);
        case Command::minimize:
            return @selector(performMiniaturize:);
        case Command::separator:
        case Command::settings:
        case Command::editRules:
        case Command::showLog:
            return nullptr;
    }
    return nullptr;
}

NSMenuItem* itemOf(const MenuItem& item, FVMenuTarget* target) {
    if (item.command == Command::separator) return [NSMenuItem separatorItem];
    const SEL standard = standardAction(item.command);
    NSMenuItem* const result =
        [[NSMenuItem alloc] initWithTitle:nsString(item.title)
                                   action:standard != nullptr ? standard : @selector(performItem:)
                            keyEquivalent:nsString(item.key)];
    result.target = standard != nullptr ? nil : target;
    result.tag = static_cast<NSInteger>(item.command);
    return result;
}

}  // namespace

NSMenu* menuOf(std::string_view title, const std::vector<MenuItem>& items, FVMenuTarget* target) {
    NSMenu* const menu = [[NSMenu alloc] initWithTitle:nsString(title)];
    for (const MenuItem& item : items) [menu addItem:itemOf(item, target)];
    return menu;
}

NSMenu* menuBarOf(const std::vector<Menu>& menus, FVMenuTarget* target) {
    NSMenu* const bar = [[NSMenu alloc] initWithTitle:@""];
    for (const Menu& menu : menus) {
        NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:nsString(menu.title)
                                                            action:nil
                                                     keyEquivalent:@""];
        item.submenu = menuOf(menu.title, menu.items, target);
        [bar addItem:item];
    }
    return bar;
}

}  // namespace ferrivane
