// What the settings window shows.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsView.h"

@interface FVSettingsContentView : NSView

// The view outlives this. It is drawn anew, once, when it has changed and the main thread is free.
- (instancetype)initWithView:(ferrivane::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

// Now.
- (void)render;
// Says again which rule is edited.
- (void)tellFocus;

@end
