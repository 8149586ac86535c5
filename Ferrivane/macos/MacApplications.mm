#import "Ferrivane/macos/MacApplications.h"

#include <utility>

#import <Cocoa/Cocoa.h>

#include "Ferrivane/DefaultBrowser.h"
#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {
namespace {

std::optional<std::string> pathText(NSURL* file) {
    return optionalUtf8(file.path);
}

}  // namespace

std::optional<std::filesystem::path> MacApplications::location(std::string_view bundleId) const {
    return optionalPath(
        [NSWorkspace.sharedWorkspace URLForApplicationWithBundleIdentifier:nsString(bundleId)]);
}

std::optional<std::filesystem::path> MacApplications::executable(
    const std::filesystem::path& application) const {
    return optionalPath([NSBundle bundleWithURL:fileURL(application)].executableURL);
}

std::optional<std::string> MacApplications::identifier(
    const std::filesystem::path& application) const {
    return optionalUtf8([NSBundle bundleWithURL:fileURL(application)].bundleIdentifier);
}

std::optional<std::filesystem::path> MacApplications::handler(std::string_view scheme) const {
    NSURL* const link = [NSURL URLWithString:nsString(DefaultBrowser::sampleLink(scheme))];
    return optionalPath([NSWorkspace.sharedWorkspace URLForApplicationToOpenURL:link]);
}

void MacApplications::setHandler(
    const std::filesystem::path& application, std::string_view scheme,
    std::function<void(std::expected<void, PlatformError>)> completion) {
    const auto done = loop_.awaiting(std::move(completion));
    [NSWorkspace.sharedWorkspace setDefaultApplicationAtURL:fileURL(application)
                                       toOpenURLsWithScheme:nsString(scheme)
                                          completionHandler:^(NSError* error) {
                                            done(outcomeOf(error));
                                          }];
}

std::vector<pid_t> MacApplications::running(std::string_view bundleId) const {
    std::vector<pid_t> processes;
    for (NSRunningApplication* application in
         [NSRunningApplication runningApplicationsWithBundleIdentifier:nsString(bundleId)]) {
        processes.push_back(application.processIdentifier);
    }
    return processes;
}

std::vector<Applications::Running> MacApplications::runningApplications() const {
    std::vector<Running> applications;
    for (NSRunningApplication* application in NSWorkspace.sharedWorkspace.runningApplications) {
        if (application.activationPolicy != NSApplicationActivationPolicyRegular) continue;
        applications.push_back({.process = application.processIdentifier,
                                .name = optionalUtf8(application.localizedName),
                                .bundleId = optionalUtf8(application.bundleIdentifier),
                                .path = pathText(application.bundleURL)});
    }
    return applications;
}

std::optional<Opener> MacApplications::runningApplication(pid_t process, const std::string&) const {
    NSRunningApplication* const application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:process];
    if (application == nil) return std::nullopt;
    return Opener{.name = optionalUtf8(application.localizedName),
                  .bundleId = optionalUtf8(application.bundleIdentifier),
                  .path = pathText(application.bundleURL)};
}

Applications::Bundle MacApplications::ownBundle() const {
    NSBundle* const bundle = NSBundle.mainBundle;
    Bundle own{.identifier = optionalUtf8(bundle.bundleIdentifier), .version = std::nullopt};
    if (own.identifier) own.location = utf8(bundle.bundlePath);
    id const version = [bundle objectForInfoDictionaryKey:@"CFBundleShortVersionString"];
    if ([version isKindOfClass:NSString.class]) own.version = utf8(version);
    return own;
}

std::string MacApplications::displayName(const std::filesystem::path& application) const {
    return application.stem().string();
}

bool MacApplications::comesBefore(const std::string& name, const std::string& other) const {
    return [nsString(name) localizedCaseInsensitiveCompare:nsString(other)] == NSOrderedAscending;
}

}  // namespace ferrivane
