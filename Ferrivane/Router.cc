#include "Ferrivane/Router.h"

#include <chrono>
#include <utility>

#include "Ferrivane/ProfileSource.h"
#include "core/ChromeProfiles.h"
#include "core/Matcher.h"
#include "core/Redact.h"

namespace ferrivane {
namespace {

std::string shown(const ChromeProfile& profile) {
    return profile.name + " [" + profile.directory + "]";
}

std::string shown(const std::vector<ChromeProfile>& profiles) {
    std::string list;
    for (const ChromeProfile& profile : profiles) {
        if (!list.empty()) list += ", ";
        list += shown(profile);
    }
    return list;
}

std::string reason(const Decision& decision) {
    if (!decision.rule) return "default";
    return "rule #" + std::to_string(*decision.ruleIndex + 1) + " (" +
           std::string(rawValue(decision.rule->kind)) + " \"" + decision.rule->match + "\")";
}

// An unknown profile is a guess at a directory only where there is no catalogue to know better.
std::optional<ChromeProfile> resolved(const Decision& decision,
                                      const std::vector<ChromeProfile>& profiles) {
    if (profiles.empty()) return ChromeProfiles::bareDirectory(decision.profile);
    return ChromeProfiles::resolve(decision.profile, profiles);
}

}  // namespace

Router::Router(const Platform& platform, Log& sharedLog, std::filesystem::path rulesFile)
    : platform_(platform), log(sharedLog), rulesFile_(std::move(rulesFile)) {}

void Router::route(const std::string& url, const std::optional<Opener>& opener,
                   const std::optional<std::string>& activationToken,
                   const Completion& completion) {
    const auto started = platform_.mainLoop.now();
    const Config config = loadConfig();
    const Decision decision = Matcher::decide(url, opener, config);

    loadProfiles([=, this](const std::vector<ChromeProfile>& profiles) {
        const auto profile = resolved(decision, profiles);
        log.info(Redact::url(url, config.logFullURLs) + " from " +
                 (opener ? opener->description() : "unknown app") + " → " +
                 (profile ? shown(*profile) : "profile \"" + decision.profile + "\" NOT FOUND") +
                 " via " + reason(decision));
        if (!profile) {
            log.warn(
                "opening without --profile-directory so Chrome does not create a new profile; "
                "known profiles: " +
                shown(profiles));
        }

        ChromeLauncher::Request request{.url = url, .activationToken = activationToken};
        if (profile) request.profileDirectory = profile->directory;
        ChromeLauncher::open(
            platform_, log, request,
            [this, url, started, completion](const ChromeLauncher::Outcome& outcome) {
                if (outcome) {
                    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
                        platform_.mainLoop.now() - started);
                    log.info("  " + *outcome + " (" + std::to_string(elapsed.count()) + " ms)");
                } else {
                    log.error("  Chrome launch failed: " + outcome.error().description());
                    platform_.dialogs.showLaunchFailure(launchFailureAlert(url, outcome.error()));
                }
                if (completion) completion(outcome.has_value());
            });
    });
}

Config Router::loadConfig() const {
    auto config = Config::load(rulesFile_);
    if (config) return std::move(*config);
    log.error("cannot read " + rulesFile_.string() + ": " + config.error().description() +
              "; using built-in defaults");
    return {};
}

void Router::loadProfiles(const std::function<void(std::vector<ChromeProfile>)>& completion) const {
    ProfileSource::load(platform_, [this, completion](ProfileSource::Profiles profiles) {
        if (!profiles) {
            log.error("cannot read Chrome profiles: " + profiles.error());
            return completion({});
        }
        completion(std::move(*profiles));
    });
}

LaunchFailureAlert launchFailureAlert(const std::string& url,
                                      const ChromeLauncher::LaunchError& error) {
    const std::string description = error.description();
    return {.title = "Couldn't open the link in Google Chrome",
            .reason = description,
            .link = url,
            .informativeText = description + "\n\n" + url,
            .buttons = {"Copy Link", "OK"}};
}

}  // namespace ferrivane
