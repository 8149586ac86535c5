// Where the person tries a link: the link, who sends it, and where it would open.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsView.h"

@interface FVLinkTesterView : NSView

// The view outlives this.
- (instancetype)initWithView:(ferrivane::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

- (void)render;

// In the order of the Tab key.
- (NSArray<NSView*>*)keyViews;

@end
