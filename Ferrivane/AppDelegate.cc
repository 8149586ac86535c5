#include "Ferrivane/AppDelegate.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <unistd.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/FirstRun.h"
#include "Ferrivane/IncomingLinks.h"
#include "Ferrivane/MainMenu.h"

namespace ferrivane {

using namespace std::chrono_literals;

// A start to open a link brings the link within this time; without one the person wants the window.
static constexpr auto kLinkGrace = 1000ms;

AppDelegate::AppDelegate(const Platform& platform, Log& sharedLog, bool isAgent,
                         std::filesystem::path rulesFile)
    : platform_(platform),
      log(sharedLog),
      rulesFile_(std::move(rulesFile)),
      queue_(platform, sharedLog, rulesFile_),
      menuBar_(platform.userInterface, sharedLog, [this] { terminate(); }),
      store(platform, sharedLog, rulesFile_),
      agentMode(isAgent) {}

Session::Place AppDelegate::applicationWillFinishLaunching() {
    return platform_.session.join(*this);
}

void AppDelegate::applicationDidFinishLaunching() {
    FirstRun::ensureConfig(log, rulesFile_);
    log.info("Ferrivane " + AppInfo::version(platform_.applications) + " started" +
             (agentMode ? " (agent)" : ""));
    MainMenu::install(platform_.userInterface, [this] { showSettings(); }, [this] { terminate(); });
    menuBar_.onSettings = [this] { showSettings(); };
    menuBar_.setVisible(platform_.preferences.flag(MenuBar::visibilityKey));
    if (!agentMode) {
        platform_.mainLoop.after(kLinkGrace, [this] {
            if (!receivedLink) showSettings();
        });
    }
}

void AppDelegate::showSettings(const std::optional<std::string>& activationToken) {
    if (!settings_) settings_.emplace(platform_, store, menuBar_);
    settings_->reload();
    platform_.userInterface.showSettings(*settings_, activationToken);
}

void AppDelegate::terminate() {
    platform_.session.leave();
    queue_.whenIdle([this] { platform_.mainLoop.stop(); });
}

bool AppDelegate::handleGetURL(const LinkEvent& event) {
    receivedLink = true;
    if (event.urls.size() > mostLinksWaiting) {
        log.warn("refused " + std::to_string(event.urls.size()) + " links at once");
        return false;
    }
    bool taken = false;
    bool isForUs = false;
    std::optional<std::optional<Opener>> opener;  // one for all, and only when needed
    auto token = event.activationToken;
    const std::vector<std::string> nothing{""};
    for (const std::string& url : event.urls.empty() ? nothing : event.urls) {
        if (url.empty()) {
            log.warn("GetURL event without a URL");
        } else if (IncomingLinks::isOwn(url)) {
            isForUs = true;
        } else if (const auto reason = refusal(url)) {
            log.warn(*reason);
        } else {
            taken = true;
            if (!opener) opener = openerFromSenderOf(event);
            queue_.add({url, *opener, std::exchange(token, std::nullopt)});
        }
    }
    if (isForUs) handleAppURL(event.activationToken);
    return taken || isForUs;
}

void AppDelegate::openFiles(const std::vector<std::string>& paths, const LinkEvent& event) {
    receivedLink = true;
    const auto opener = openerFromSenderOf(event);
    for (const std::string& path : paths) {
        queue_.add({IncomingLinks::fileURL(path), opener, std::nullopt});
    }
}

void AppDelegate::reopen(const std::optional<std::string>& activationToken) {
    showSettings(activationToken);
}

bool AppDelegate::performAction(std::string_view name,
                                const std::optional<std::string>& activationToken) {
    if (name == "settings") {
        showSettings(activationToken);
    } else if (name == "edit-rules") {
        menuBar_.editRules();
    } else if (name == "show-log") {
        menuBar_.showLog();
    } else {
        return false;
    }
    return true;
}

void AppDelegate::sessionEnded() {
    // Its bus and its display may both say so.
    if (!std::exchange(sessionHasEnded_, true)) log.info("the session has ended; ending too");
    terminate();
}

std::optional<Opener> AppDelegate::openerFromSenderOf(const LinkEvent& event) const {
    const pid_t sender = std::max(event.sender.value_or(0), 0);
    if (sender == ::getpid() || (sender == 0 && event.startupId.empty())) return std::nullopt;
    return platform_.applications.runningApplication(sender, event.startupId);
}

std::optional<std::string> AppDelegate::refusal(const std::string& url) const {
    if (url.size() > longestLink) {
        return "refused a link of " + std::to_string(url.size()) + " bytes";
    }
    // A caller on the bus hears of it. Where nobody does, the launcher refuses it with an alert.
    if (platform_.desktop == Desktop::freedesktop && ChromeLauncher::isSwitch(url)) {
        return "refused a link that Chrome would take for a switch";
    }
    if (queue_.count() >= mostLinksWaiting || queue_.bytes() + url.size() > mostBytesWaiting) {
        return "refused a link: " + std::to_string(queue_.count()) + " are waiting already";
    }
    return std::nullopt;
}

void AppDelegate::handleAppURL(const std::optional<std::string>& activationToken) {
    showSettings(activationToken);
}

}  // namespace ferrivane
