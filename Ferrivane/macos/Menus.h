// Menus of AppKit out of the portable ones. Main thread only.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/platform/UserInterface.h"

// Takes the items that AppKit does not carry out itself; a menu does not keep it.
@interface FVMenuTarget : NSObject
- (instancetype)initWithPerform:(ferrivane::UserInterface::Perform)perform
    NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;
- (void)performItem:(NSMenuItem*)item;
@end

namespace ferrivane {

NSMenu* menuOf(std::string_view title, const std::vector<MenuItem>& items, FVMenuTarget* target);
NSMenu* menuBarOf(const std::vector<Menu>& menus, FVMenuTarget* target);

}  // namespace ferrivane
