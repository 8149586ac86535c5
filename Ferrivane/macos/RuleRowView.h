// One rule in the list of the settings. It shows another one when the list scrolls or changes.
#pragma once

#include <cstddef>
#include <optional>

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsView.h"

@interface FVRuleRowView : NSTableCellView

// The view outlives this.
- (instancetype)initWithView:(ferrivane::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

- (void)showRuleAt:(std::size_t)index;

// The pattern is edited while its field has the focus.
- (BOOL)isEditing;
- (void)beginEditing;
- (void)endEditing;
- (BOOL)showsRule:(const std::optional<ferrivane::Uuid>&)rule;
// Says again that it is edited.
- (void)tellFocus;

// In the order of the Tab key.
- (NSArray<NSView*>*)keyViews;

@end
