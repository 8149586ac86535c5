#import "Ferrivane/macos/ApplicationDelegate.h"

#import "Ferrivane/macos/Conversions.h"
#include "core/Log.h"

using namespace ferrivane;

namespace {

std::optional<pid_t> senderOf(NSAppleEventDescriptor* event) {
    NSAppleEventDescriptor* const sender = [event attributeDescriptorForKeyword:keySenderPIDAttr];
    if (sender == nil) return std::nullopt;
    return sender.int32Value;
}

}  // namespace

@implementation FVApplicationDelegate {
    ApplicationEvents* _events;
    MacMainLoop* _loop;
}

- (instancetype)initWithEvents:(ApplicationEvents&)events loop:(MacMainLoop&)loop {
    if (self = [super init]) {
        _events = &events;
        _loop = &loop;
    }
    return self;
}

// The link that caused the launch comes before it is finished.
- (void)applicationWillFinishLaunching:(NSNotification*)notification {
    [NSAppleEventManager.sharedAppleEventManager setEventHandler:self
                                                     andSelector:@selector(handleGetURL:
                                                                         withReplyEvent:)
                                                   forEventClass:kInternetEventClass
                                                      andEventID:kAEGetURL];
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    _loop->leaveApplication();
}

- (void)handleGetURL:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply {
    NSString* const url = [event paramDescriptorForKeyword:keyDirectObject].stringValue;
    LinkEvent link{.sender = senderOf(event)};
    if (url != nil) link.urls.push_back(utf8(url));
    _events->handleGetURL(link);
}

- (void)application:(NSApplication*)application openFiles:(NSArray<NSString*>*)files {
    std::vector<std::string> paths;
    for (NSString* file in files) paths.push_back(utf8(file));
    NSAppleEventManager* const manager = NSAppleEventManager.sharedAppleEventManager;
    _events->openFiles(paths, {.sender = senderOf(manager.currentAppleEvent)});
    [application replyToOpenOrPrint:NSApplicationDelegateReplySuccess];
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)application
                    hasVisibleWindows:(BOOL)hasVisibleWindows {
    _events->reopen(std::nullopt);
    return NO;
}

// The answer comes when every link that was taken is on its way.
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)application {
    _loop->whenStopped([application] { [application replyToApplicationShouldTerminate:YES]; });
    _events->terminate();
    return NSTerminateLater;
}

// AppKit ends the process: nothing behind the main loop is reached.
- (void)applicationWillTerminate:(NSNotification*)notification {
    Log::shared().flush();
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
    return YES;
}

@end
