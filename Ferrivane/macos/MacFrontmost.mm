#import "Ferrivane/macos/MacFrontmost.h"

#include <utility>

#import <Cocoa/Cocoa.h>

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {
namespace {

NSRunningApplication* applicationOf(pid_t process) {
    return [NSRunningApplication runningApplicationWithProcessIdentifier:process];
}

}  // namespace

std::optional<Frontmost::Application> MacFrontmost::current() const {
    NSRunningApplication* const front = NSWorkspace.sharedWorkspace.frontmostApplication;
    if (front == nil) return Application{};
    return Application{front.processIdentifier, optionalUtf8(front.localizedName)};
}

bool MacFrontmost::activateHandedOver(pid_t process) {
    if (@available(macOS 14.0, *)) {
        NSRunningApplication* const target = applicationOf(process);
        if (target == nil) return false;
        [NSApp yieldActivationToApplication:target];
        return [target activateFromApplication:NSRunningApplication.currentApplication options:0];
    }
    return false;
}

bool MacFrontmost::activate(pid_t process) {
    return [applicationOf(process) activateWithOptions:0];
}

void MacFrontmost::open(const std::filesystem::path& location,
                        std::function<void(std::expected<void, PlatformError>)> completion) {
    NSWorkspaceOpenConfiguration* const configuration =
        [NSWorkspaceOpenConfiguration configuration];
    configuration.activates = YES;
    configuration.addsToRecentItems = NO;
    const auto done = loop_.awaiting(std::move(completion));
    [NSWorkspace.sharedWorkspace openApplicationAtURL:fileURL(location)
                                        configuration:configuration
                                    completionHandler:^(NSRunningApplication*, NSError* error) {
                                      done(outcomeOf(error));
                                    }];
}

}  // namespace ferrivane
