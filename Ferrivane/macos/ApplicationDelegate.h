// Hands on what AppKit tells the application. Main thread only.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/platform/Session.h"

@interface FVApplicationDelegate : NSObject <NSApplicationDelegate>

// Both outlive it. Its own [NSApp run] returns when the application has finished launching.
- (instancetype)initWithEvents:(ferrivane::ApplicationEvents&)events
                          loop:(ferrivane::MacMainLoop&)loop NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;

- (void)handleGetURL:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply;

@end
