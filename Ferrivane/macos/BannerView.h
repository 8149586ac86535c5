// A line of the settings with a symbol in front and buttons behind.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsView.h"

@interface FVBannerView : NSView

- (instancetype)initWithText:(const ferrivane::Control&)text
                     buttons:(NSArray<NSButton*>*)buttons NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

// The first button gets the banner's title; without one no button is shown.
- (void)show:(const ferrivane::SettingsView::Banner&)banner;

@end
