#import "Ferrivane/macos/MacBrowser.h"

#include <string>
#include <utility>

#import <Cocoa/Cocoa.h>

#include "Ferrivane/ChromeLauncher.h"
#import "Ferrivane/macos/Conversions.h"
#include "core/ChromeSingleton.h"

namespace ferrivane {
namespace {

using Completion = std::function<void(std::expected<pid_t, PlatformError>)>;
using Handler = void (^)(NSRunningApplication*, NSError*);

NSWorkspaceOpenConfiguration* activatingConfiguration() {
    NSWorkspaceOpenConfiguration* const configuration =
        [NSWorkspaceOpenConfiguration configuration];
    configuration.activates = YES;
    return configuration;
}

// Called once, on a thread of the workspace's.
Handler handlerFor(MacMainLoop& loop, Completion completion) {
    const auto done = loop.awaiting(std::move(completion));
    return ^(NSRunningApplication* application, NSError* error) {
      if (error != nil) return done(std::unexpected(platformError(error)));
      done(application == nil ? 0 : application.processIdentifier);
    };
}

}  // namespace

std::optional<pid_t> MacBrowser::running() const {
    NSRunningApplication* const chrome =
        [NSRunningApplication
            runningApplicationsWithBundleIdentifier:nsString(
                                                        ChromeLauncher::chromeBundleIdentifier)]
            .firstObject;
    if (chrome == nil) return std::nullopt;
    return chrome.processIdentifier;
}

bool MacBrowser::isRunning(pid_t process) const {
    const auto folder = ChromeSingleton::userDataDirectory();
    std::error_code error;
    const std::string lock = std::filesystem::read_symlink(folder / "SingletonLock", error);
    // The lock first: a connection to a browser that hangs would fill its queue.
    if (error || !lock.ends_with("-" + std::to_string(process))) return false;
    const auto socket = ChromeSingleton::socketPath(folder);
    return socket && ChromeSingleton::listener(*socket) == process;
}

void MacBrowser::launch(const std::filesystem::path& location, const Arguments& arguments,
                        Completion completion) {
    NSWorkspaceOpenConfiguration* const configuration = activatingConfiguration();
    configuration.arguments = nsStrings(arguments.switches);
    [NSWorkspace.sharedWorkspace openApplicationAtURL:fileURL(location)
                                        configuration:configuration
                                    completionHandler:handlerFor(loop_, std::move(completion))];
}

void MacBrowser::openLink(const std::filesystem::path& location, const Arguments& link,
                          Completion completion) {
    const std::string& text = link.switches.back();
    NSURL* const url = [NSURL URLWithString:nsString(text)];
    if (url == nil) return completion(std::unexpected(PlatformError{"not a URL: " + text}));
    [NSWorkspace.sharedWorkspace openURLs:@[ url ]
                     withApplicationAtURL:fileURL(location)
                            configuration:activatingConfiguration()
                        completionHandler:handlerFor(loop_, std::move(completion))];
}

std::expected<pid_t, PlatformError> MacBrowser::startRelay(
    const std::filesystem::path& executable, const Arguments& arguments,
    std::function<void(int status)> completion) {
    NSTask* const task = [[NSTask alloc] init];
    task.executableURL = fileURL(executable);
    task.arguments = nsStrings(arguments.switches);
    task.standardInput = NSFileHandle.fileHandleWithNullDevice;
    task.standardOutput = NSFileHandle.fileHandleWithNullDevice;
    task.standardError = NSFileHandle.fileHandleWithNullDevice;
    task.terminationHandler = ^(NSTask* ended) {
      const pid_t process = ended.processIdentifier;
      const int status = ended.terminationStatus;
      dispatch_async(dispatch_get_main_queue(), ^{
        relayEnded(process, status);
      });
    };
    NSError* error = nil;
    if (![task launchAndReturnError:&error]) return std::unexpected(platformError(error));
    const pid_t process = task.processIdentifier;
    relays_.insert_or_assign(process, Relay{task, std::move(completion)});
    loop_.retain();
    return process;
}

void MacBrowser::abandonRelay(pid_t process) {
    const auto relay = relays_.find(process);
    if (relay == relays_.end() || !relay->second.completion) return;
    relay->second.completion = nullptr;
    loop_.release();
}

void MacBrowser::relayEnded(pid_t process, int status) {
    const auto node = relays_.extract(process);
    if (!node || !node.mapped().completion) return;
    loop_.release();
    node.mapped().completion(status);
}

}  // namespace ferrivane
