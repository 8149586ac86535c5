// The window of the settings. Main thread only.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsView.h"

// A click outside of the text that is being edited commits it.
@interface FVSettingsWindow : NSWindow
@end

@interface FVSettingsWindowController : NSWindowController <NSWindowDelegate>

// The view outlives this.
- (instancetype)initWithView:(ferrivane::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithWindow:(NSWindow*)window NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

// In front of all others; the application is in the Dock as long as the window is open.
- (void)show;

@end
