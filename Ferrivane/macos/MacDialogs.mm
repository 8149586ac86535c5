#import "Ferrivane/macos/MacDialogs.h"

#import <Cocoa/Cocoa.h>

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {
namespace {

constexpr NSRect kScrollingText{{0, 0}, {320, 160}};

NSScrollView* scrolling(std::string_view text) {
    NSScrollView* const scroll = [NSTextView scrollableTextView];
    scroll.frame = kScrollingText;
    NSTextView* const view = scroll.documentView;
    view.font = [NSFont systemFontOfSize:NSFont.smallSystemFontSize];
    view.richText = NO;
    view.string = nsString(text);
    view.textColor = NSColor.labelColor;
    view.editable = NO;
    return scroll;
}

}  // namespace

NSAlert* alertOf(const LaunchFailureAlert& failure) {
    NSAlert* const alert = [[NSAlert alloc] init];
    alert.alertStyle = NSAlertStyleWarning;
    alert.messageText = nsString(failure.title);
    if (failure.isLong()) {
        alert.accessoryView = scrolling(failure.informativeText);
    } else {
        alert.informativeText = nsString(failure.informativeText);
    }
    for (const std::string& button : failure.buttons) [alert addButtonWithTitle:nsString(button)];
    alert.buttons.lastObject.keyEquivalent = @"\033";
    // One that nobody has answered does not hold up the end of the session.
    alert.window.preventsApplicationTerminationWhenModal = NO;
    return alert;
}

void MacDialogs::show(const LaunchFailureAlert& failure) {
    NSApplication* const application = NSApplication.sharedApplication;
    // What a bare executable starts with cannot come to the front.
    if (application.activationPolicy == NSApplicationActivationPolicyProhibited) {
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
    }
    NSAlert* const alert = alertOf(failure);
    [application activateIgnoringOtherApps:YES];
    if ([alert runModal] != NSAlertFirstButtonReturn) return;
    NSPasteboard* const pasteboard = NSPasteboard.generalPasteboard;
    [pasteboard clearContents];
    [pasteboard setString:nsString(failure.link) forType:NSPasteboardTypeString];
}

}  // namespace ferrivane
