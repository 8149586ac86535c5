#import "Ferrivane/macos/MacDialogs.h"

#import <Cocoa/Cocoa.h>

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {

void MacDialogs::show(const LaunchFailureAlert& failure) {
    NSApplication* const application = NSApplication.sharedApplication;
    // What a bare executable starts with cannot come to the front.
    if (application.activationPolicy == NSApplicationActivationPolicyProhibited) {
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
    }
    NSAlert* const alert = [[NSAlert alloc] init];
    alert.alertStyle = NSAlertStyleWarning;
    alert.messageText = nsString(failure.title);
    alert.informativeText = nsString(failure.informativeText);
    for (const std::string& button : failure.buttons) [alert addButtonWithTitle:nsString(button)];
    [application activateIgnoringOtherApps:YES];
    if ([alert runModal] != NSAlertFirstButtonReturn) return;
    NSPasteboard* const pasteboard = NSPasteboard.generalPasteboard;
    [pasteboard clearContents];
    [pasteboard setString:nsString(failure.link) forType:NSPasteboardTypeString];
}

}  // namespace ferrivane
