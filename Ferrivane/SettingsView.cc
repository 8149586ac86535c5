#include "Ferrivane/SettingsView.h"

#include <algorithm>
#include <utility>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/DefaultBrowser.h"
#include "Ferrivane/RuleRow.h"
#include "core/support/Text.h"

namespace ferrivane {

using namespace std::string_literals;

SettingsView::SettingsView(const Platform& platform, RulesStore& store, MenuBar& menuBar)
    : platform_(platform),
      store_(store),
      menuBar_(menuBar),
      showMenuBarIcon_(platform.preferences.flag(MenuBar::visibilityKey)) {}

void SettingsView::refresh() {
    willChange.tell();
    const Applications& applications = platform_.applications;
    isDefaultBrowser_ = DefaultBrowser::isDefault(applications, applications.ownBundle().location);
    const auto handler = DefaultBrowser::handler(applications, "https");
    browserName_ = handler ? applications.displayName(*handler) : "another app"s;
    runningApps_ = RunningApp::current(applications);
}

SettingsView::Banner SettingsView::defaultBrowserBanner() const {
    if (isDefaultBrowser_) {
        return {.symbol = "checkmark.circle.fill",
                .tint = Banner::Tint::green,
                .text =
                    "Ferrivane is your default browser. Links from other apps go through your "
                    "rules."};
    }
    return {.symbol = "exclamationmark.triangle.fill",
            .text = "Ferrivane is not the default browser: links open straight in " + browserName_ +
                    ".",
            .button = "Make Ferrivane the default"};
}

void SettingsView::makeDefaultBrowser() {
    DefaultBrowser::make(platform_.applications, platform_.applications.ownBundle().location,
                         [this, alive = std::weak_ptr(alive_)](const auto&) {
                             if (!alive.expired()) refresh();
                         });
}

std::optional<SettingsView::Banner> SettingsView::helperBanner() const {
    Banner banner{.symbol = "exclamationmark.triangle.fill", .text = {}};
    switch (store_.helper()) {
        case HelperScript::State::missing:
            banner.text =
                "One more step: Ferrivane needs a small helper script to open links in a specific "
                "Chrome profile. Until then links open in Chrome without choosing a profile.";
            banner.button = "Install Helper…";
            return banner;
        case HelperScript::State::outdated:
            banner.text =
                "The helper script is from an older version of Ferrivane. Install it again to keep "
                "profiles working.";
            banner.button = "Update Helper…";
            return banner;
        case HelperScript::State::notNeeded:
        case HelperScript::State::ready:
            break;
    }
    return std::nullopt;
}

void SettingsView::installHelper() {
    store_.installHelper();
}

void SettingsView::revealHelper() const {
    store_.revealHelper();
}

void SettingsView::move(const Uuid& rule, std::ptrdiff_t offset) {
    Config config = store_.config();
    config.moveRule(rule, offset);
    store_.setConfig(std::move(config));
}

template<typename Change>
void SettingsView::edit(const Uuid& rule, Change change) {
    const auto index = indexOf(rule);
    if (!index) return;
    Config config = store_.config();
    change(config.rules[*index]);
    store_.setConfig(std::move(config));
}

void SettingsView::setKind(const Uuid& rule, Rule::Kind kind) {
    edit(rule, [&](Rule& edited) { edited.kind = kind; });
}

void SettingsView::setMatch(const Uuid& rule, const std::string& match) {
    edit(rule, [&](Rule& edited) { edited.match = match; });
}

void SettingsView::setProfile(const Uuid& rule, const std::string& profile) {
    edit(rule, [&](Rule& edited) { edited.profile = profile; });
}

void SettingsView::setDefaultProfile(const std::string& profile) {
    Config config = store_.config();
    config.defaultProfile = profile;
    store_.setConfig(std::move(config));
}

ProfilePicker::Choices SettingsView::profileChoices(const std::string& selection) const {
    return ProfilePicker::choices(selection, store_.profiles());
}

void SettingsView::addRule() {
    setFocusedRule(store_.addRule());
}

void SettingsView::removeRule(const Uuid& rule) {
    store_.removeRule(rule);
}

std::string_view SettingsView::matchPlaceholder(Rule::Kind kind) const {
    return RuleRow::placeholder(kind, platform_.desktop);
}

void SettingsView::setFocusedRule(const std::optional<Uuid>& rule) {
    if (rule == focusedRule_) return;
    willChange.tell();
    focusedRule_ = rule;
    readChanges();
}

void SettingsView::rulesFileChanged() {
    mustReadChanges_ = true;
    readChanges();
}

bool SettingsView::mustWait() const {
    return draggingRule_ || (isInteracting && isInteracting());
}

void SettingsView::readChanges() {
    if (mustWait()) return;
    if (std::exchange(mustReload_, false)) store_.reload();
    if (focusedRule_) return;
    if (std::exchange(mustReadChanges_, false)) store_.reloadIfChanged();
}

void SettingsView::reload() {
    mustReload_ = true;
    readChanges();
}

std::string SettingsView::beginDrag(const Uuid& rule) {
    willChange.tell();
    draggingRule_ = rule;
    return rule.text();
}

void SettingsView::setDropTargeted(const Uuid& rule, bool isTargeted) {
    // Leaving the row before may be told of after entering this one.
    if (!isTargeted && dropTarget_ != rule) return;
    willChange.tell();
    dropTarget_ = isTargeted ? std::optional(rule) : std::nullopt;
}

std::optional<SettingsView::Edge> SettingsView::insertionEdge(const Uuid& rule) const {
    if (dropTarget_ != rule) return std::nullopt;
    const auto dragged = draggingRule_ ? indexOf(*draggingRule_) : std::nullopt;
    const auto target = indexOf(rule);
    return dragged && target && *dragged > *target ? Edge::top : Edge::bottom;
}

void SettingsView::drop(const std::optional<Uuid>& target) {
    if (draggingRule_) {
        Config config = store_.config();
        config.moveRule(*draggingRule_, target);
        store_.setConfig(std::move(config));
    }
    endDrag();
}

void SettingsView::endDrag() {
    willChange.tell();
    draggingRule_.reset();
    dropTarget_.reset();
    readChanges();
}

void SettingsView::setTestURL(std::string url) {
    willChange.tell();
    testURL_ = std::move(url);
}

void SettingsView::setTestAppPid(std::optional<pid_t> process) {
    willChange.tell();
    testAppPid_ = process;
}

SettingsView::Senders SettingsView::senders() const {
    Senders senders{{{std::string(unknownApp)}}};
    for (const RunningApp& app : runningApps_) {
        if (app.id == testAppPid_) senders.current = senders.all.size();
        senders.all.push_back({app.name, app.id});
    }
    return senders;
}

std::string SettingsView::testResult() const {
    const std::string url(Text::trim(testURL_));
    if (url.empty()) return "Type a link to see where it would open.";
    std::optional<Opener> opener;
    const auto app = std::ranges::find(runningApps_, testAppPid_, &RunningApp::id);
    if (app != runningApps_.end()) opener = Opener{app->name, app->bundleId, app->path};
    const auto [decision, profile] = store_.decide(url, opener);
    const std::string reason = "   (" +
                               (decision.rule ? "rule #" + std::to_string(*decision.ruleIndex + 1)
                                              : "no rule matched, default"s) +
                               ")";
    if (profile) return "→ " + profile->name + " [" + profile->directory + "]" + reason;
    return "→ \"" + decision.profile +
           "\" is not a Chrome profile; Chrome would pick the window itself" + reason;
}

void SettingsView::setShowMenuBarIcon(bool shows) {
    willChange.tell();
    showMenuBarIcon_ = shows;
    platform_.preferences.setFlag(MenuBar::visibilityKey, shows);
    menuBar_.setVisible(shows);
    platform_.userInterface.setStartsAtLogin(shows);
}

void SettingsView::editRules() const {
    menuBar_.editRules();
}

void SettingsView::showLog() const {
    menuBar_.showLog();
}

std::string SettingsView::version() const {
    return "Ferrivane " + AppInfo::version(platform_.applications);
}

std::optional<std::size_t> SettingsView::indexOf(const Uuid& rule) const {
    const auto& rules = store_.config().rules;
    const auto found = std::ranges::find(rules, rule, &Rule::id);
    if (found == rules.end()) return std::nullopt;
    return static_cast<std::size_t>(found - rules.begin());
}

}  // namespace ferrivane
