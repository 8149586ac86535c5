// The list of rules in the settings, in an outline of its own.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsView.h"

@interface FVRulesListView : NSBox <NSTableViewDataSource, NSTableViewDelegate, NSMenuDelegate>

// The view outlives this.
- (instancetype)initWithView:(ferrivane::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

@property(readonly) NSTableView* table;
// Where the Tab key leads to behind the last row. It leads to the table in front of the first one.
@property(weak) NSView* following;

// Shows what has changed, and gives the focus to the rule that is to have it.
- (void)render;
// Says again which rule is edited.
- (void)tellFocus;

@end
