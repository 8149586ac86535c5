#import "Ferrivane/macos/MacScripts.h"

#include <utility>

#import <Cocoa/Cocoa.h>

#include "Ferrivane/HelperScript.h"
#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {

std::optional<std::filesystem::path> MacScripts::directory() const {
    return optionalPath([NSFileManager.defaultManager URLForDirectory:NSApplicationScriptsDirectory
                                                             inDomain:NSUserDomainMask
                                                    appropriateForURL:nil
                                                               create:NO
                                                                error:nil]);
}

std::optional<std::filesystem::path> MacScripts::bundledHelper() const {
    const std::filesystem::path file = HelperScript::fileName;
    return optionalPath([NSBundle.mainBundle
        URLForResource:nsString(file.stem().native())
         withExtension:nsString(file.extension().native().substr(1))]);
}

std::filesystem::path MacScripts::temporaryDirectory() const {
    return optionalPath(NSFileManager.defaultManager.temporaryDirectory).value_or("/tmp");
}

void MacScripts::run(const std::filesystem::path& script, const std::vector<std::string>& arguments,
                     const std::optional<std::string>&,
                     std::function<void(std::expected<void, PlatformError>)> completion) {
    NSError* error = nil;
    __block NSUserUnixTask* task = [[NSUserUnixTask alloc] initWithURL:fileURL(script)
                                                                 error:&error];
    if (task == nil) return completion(std::unexpected(platformError(error)));
    const auto done = loop_.awaiting(std::move(completion));
    [task executeWithArguments:nsStrings(arguments)
             completionHandler:^(NSError* failure) {
               task = nil;  // kept until here
               done(outcomeOf(failure));
             }];
}

void MacScripts::select(const std::filesystem::path& file) {
    [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ fileURL(file) ]];
}

void MacScripts::openFolder(const std::filesystem::path& folder) {
    [NSWorkspace.sharedWorkspace openURL:fileURL(folder)];
}

}  // namespace ferrivane
