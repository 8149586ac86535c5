#import "Ferrivane/macos/MacSession.h"

#include <expected>

#import <Cocoa/Cocoa.h>

namespace ferrivane {

Session::Place MacSession::join(ApplicationEvents& events) {
    // Or AppKit opens arguments that mean nothing to us as files.
    [NSUserDefaults.standardUserDefaults
        registerDefaults:@{@"NSTreatUnknownArgumentsAsOpen" : @"NO"}];
    NSApplication* const application = NSApplication.sharedApplication;
    delegate_ = [[FVApplicationDelegate alloc] initWithEvents:events loop:loop_];
    application.delegate = delegate_;
    [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
    [application run];
    return Place::resident;
}

bool MacSession::reopenResident(const std::optional<std::string>&) {
    NSBundle* const bundle = NSBundle.mainBundle;
    if (bundle.bundleIdentifier == nil) return false;
    bool reopened = false;
    const auto done = loop_.awaiting<bool>([&reopened](bool isOpen) { reopened = isOpen; });
    [NSWorkspace.sharedWorkspace openApplicationAtURL:bundle.bundleURL
                                        configuration:[NSWorkspaceOpenConfiguration configuration]
                                    completionHandler:^(NSRunningApplication*, NSError* error) {
                                      done(error == nil);
                                    }];
    loop_.runUntilIdle();
    return reopened;
}

}  // namespace ferrivane
