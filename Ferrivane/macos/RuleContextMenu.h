// The context menu of a rule in the list of the settings.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsView.h"

// Pressed with FVMoveModifiers they move the rule that has the focus.
extern NSString* const FVMoveUpKey;
extern NSString* const FVMoveDownKey;
inline constexpr NSEventModifierFlags FVMoveModifiers =
    NSEventModifierFlagOption | NSEventModifierFlagCommand;

@interface FVRuleContextMenu : NSMenu

// The view outlives this.
- (instancetype)initWithView:(ferrivane::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithTitle:(NSString*)title NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

// Empty when there is no such row.
- (void)fillForRow:(NSInteger)row;

@end
