#include "tests/support/FakePlatform.h"

#include <algorithm>

#include "core/support/Text.h"

namespace ferrivane::test {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

std::string shown(const Browser::Arguments& arguments) {
    std::string text;
    for (const std::string& argument : arguments.switches) text += " [" + argument + "]";
    if (arguments.activationToken) text += " token=" + *arguments.activationToken;
    return text;
}

}  // namespace

std::vector<std::string> CallList::texts() const {
    std::vector<std::string> result;
    result.reserve(calls_.size());
    for (const auto& [time, text] : calls_) result.push_back(text);
    return result;
}

std::vector<std::string> CallList::timedTexts() const {
    std::vector<std::string> result;
    result.reserve(calls_.size());
    for (const auto& [time, text] : calls_) {
        result.push_back(std::to_string(duration_cast<milliseconds>(time).count()) +
                         " ms: " + text);
    }
    return result;
}

std::vector<std::string> CallList::of(const std::vector<std::string>& beginnings) const {
    std::vector<std::string> result = texts();
    std::erase_if(result, [&](const std::string& text) {
        return std::ranges::none_of(
            beginnings, [&](const std::string& beginning) { return text.starts_with(beginning); });
    });
    return result;
}

std::size_t CallList::count(std::string_view beginning) const {
    return of({std::string(beginning)}).size();
}

std::chrono::steady_clock::time_point FakeMainLoop::now() const {
    return std::chrono::steady_clock::time_point(std::chrono::hours(1000)) + calls_.now_;
}

void FakeMainLoop::afterExactly(Duration delay, std::function<void()> work) {
    timers_.emplace(std::pair(calls_.now_ + delay, ++sequence_), std::move(work));
}

void FakeMainLoop::runNext() {
    const auto timer = timers_.extract(timers_.begin());
    calls_.now_ = std::max(calls_.now_, timer.key().first);
    timer.mapped()();
}

void FakeMainLoop::runUntilIdle() {
    while (!timers_.empty()) runNext();
}

void FakeMainLoop::run() {
    while (!isStopped_ && !timers_.empty()) runNext();
}

void FakeMainLoop::advance(Duration time) {
    const Duration end = calls_.now_ + time;
    while (!timers_.empty() && timers_.begin()->first.first <= end) runNext();
    calls_.now_ = end;
}

std::optional<std::filesystem::path> FakeApplications::location(std::string_view bundleId) const {
    calls_.add("applications.location " + std::string(bundleId));
    const auto found = locations.find(bundleId);
    return found == locations.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::filesystem::path> FakeApplications::executable(
    const std::filesystem::path& application) const {
    calls_.add("applications.executable " + application.string());
    const auto found = executables.find(application);
    return found == executables.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::filesystem::path> FakeApplications::handler(std::string_view scheme) const {
    calls_.add("applications.handler " + std::string(scheme));
    const auto found = handlers.find(scheme);
    return found == handlers.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> FakeApplications::identifier(
    const std::filesystem::path& application) const {
    calls_.add("applications.identifier " + application.string());
    const auto found = identifiers.find(application);
    return found == identifiers.end() ? std::nullopt : std::optional(found->second);
}

void FakeApplications::setHandler(
    const std::filesystem::path& application, std::string_view scheme,
    std::function<void(std::expected<void, PlatformError>)> completion) {
    calls_.add("applications.setHandler " + std::string(scheme) + " " + application.string());
    const auto finish = [this, application, scheme = std::string(scheme),
                         done = std::move(completion)] {
        const auto refusal = refusals.find(scheme);
        if (refusal != refusals.end()) return done(std::unexpected(refusal->second));
        if (!deafSchemes.contains(scheme)) handlers.insert_or_assign(scheme, application);
        done({});
    };
    if (setHandlerTakes == FakeMainLoop::Duration()) return finish();
    loop_.afterExactly(setHandlerTakes, finish);
}

std::optional<std::string> FakeApplications::overridingSetting(
    const std::filesystem::path& application,
    const std::vector<std::string_view>& unchanged) const {
    std::string text = "applications.overridingSetting " + application.string();
    for (const std::string_view scheme : unchanged) text.append(" ").append(scheme);
    calls_.add(text);
    return setting;
}

std::vector<pid_t> FakeApplications::running(std::string_view bundleId) const {
    calls_.add("applications.running " + std::string(bundleId));
    const auto found = processes.find(bundleId);
    return found == processes.end() ? std::vector<pid_t>() : found->second;
}

std::optional<Opener> FakeApplications::runningApplication(pid_t process,
                                                           const std::string& startupId) const {
    calls_.add("applications.runningApplication " + std::to_string(process) +
               (startupId.empty() ? "" : " " + startupId));
    const auto found = openers.find(process);
    return found == openers.end() ? std::nullopt : std::optional(found->second);
}

std::vector<Applications::Running> FakeApplications::runningApplications() const {
    calls_.add("applications.runningApplications");
    return applicationsRunning;
}

std::string FakeApplications::displayName(const std::filesystem::path& application) const {
    return application.stem();
}

bool FakeApplications::comesBefore(const std::string& name, const std::string& other) const {
    return Text::foldCase(name) < Text::foldCase(other);
}

Applications::Bundle FakeApplications::ownBundle() const {
    calls_.add("applications.ownBundle");
    return bundle;
}

void FakeBrowser::locate() {
    calls_.add("browser.locate");
}

std::optional<pid_t> FakeBrowser::running() const {
    calls_.add("browser.running");
    return process;
}

bool FakeBrowser::isRunning(pid_t asked) const {
    calls_.add("browser.isRunning " + std::to_string(asked));
    return answeringAsChrome.contains(asked);
}

void FakeBrowser::launch(const std::filesystem::path& location, const Arguments& arguments,
                         std::function<void(std::expected<pid_t, PlatformError>)> completion) {
    calls_.add("browser.launch " + location.string() + shown(arguments));
    given = arguments;
    if (launchTakes == FakeMainLoop::Duration()) return completion(launched);
    loop_.afterExactly(launchTakes, [this, done = std::move(completion)] { done(launched); });
}

void FakeBrowser::openLink(const std::filesystem::path& location, const Arguments& link,
                           std::function<void(std::expected<pid_t, PlatformError>)> completion) {
    calls_.add("browser.openLink " + location.string() + shown(link));
    given = link;
    loop_.afterExactly(launchTakes, [this, done = std::move(completion)] { done(launched); });
}

std::expected<pid_t, PlatformError> FakeBrowser::startRelay(
    const std::filesystem::path& executable, const Arguments& arguments,
    std::function<void(int status)> completion) {
    calls_.add("browser.startRelay " + executable.string() + shown(arguments));
    given = arguments;
    if (relay && relayTakes) {
        awaited_.insert(*relay);
        loop_.afterExactly(*relayTakes, [this, started = *relay, done = std::move(completion)] {
            if (awaited_.erase(started) > 0) done(relayStatus);
        });
    }
    return relay;
}

void FakeBrowser::abandonRelay(pid_t relayProcess) {
    calls_.add("browser.abandonRelay " + std::to_string(relayProcess));
    awaited_.erase(relayProcess);
}

std::optional<Frontmost::Application> FakeFrontmost::current() const {
    calls_.add("frontmost.current");
    return front;
}

bool FakeFrontmost::activateHandedOver(pid_t process) {
    calls_.add("frontmost.activateHandedOver " + std::to_string(process));
    return handsOver;
}

bool FakeFrontmost::activate(pid_t process) {
    calls_.add("frontmost.activate " + std::to_string(process));
    return activates;
}

void FakeFrontmost::open(const std::filesystem::path& location,
                         std::function<void(std::expected<void, PlatformError>)> completion) {
    calls_.add("frontmost.open " + location.string());
    if (openTakes == FakeMainLoop::Duration()) return completion(opened);
    loop_.afterExactly(openTakes, [this, done = std::move(completion)] { done(opened); });
}

bool FakeLaunchLock::tryAcquire() {
    calls_.add("launchLock.tryAcquire");
    if (held || heldElsewhere) return false;
    held = true;
    return true;
}

void FakeLaunchLock::release() {
    calls_.add(held ? "launchLock.release" : "launchLock.release of a lock that is not held");
    held = false;
}

void FakeDialogs::showLaunchFailure(const LaunchFailureAlert& alert) {
    calls_.add("dialogs.showLaunchFailure " + alert.reason);
    alerts.push_back(alert);
}

void FakeCaller::detach() {
    calls_.add("caller.detach");
}

void FakeCaller::release(int status) {
    calls_.add("caller.release " + std::to_string(status));
    if (whenReleased) whenReleased();
}

std::optional<Opener> FakeCaller::opener() const {
    calls_.add("caller.opener");
    return application;
}

Session::Place FakeSession::join(ApplicationEvents& receiver) {
    calls_.add("session.join");
    events = &receiver;
    return place;
}

void FakeSession::leave() {
    calls_.add("session.leave");
}

bool FakeSession::reopenResident(const std::optional<std::string>& activationToken) {
    calls_.add("session.reopenResident" + (activationToken ? " " + *activationToken : ""));
    return reopens;
}

void FakeUserInterface::installMainMenu(const std::vector<Menu>& menus, Perform perform) {
    calls_.add("userInterface.installMainMenu");
    mainMenu = menus;
    performOfMainMenu = std::move(perform);
}

void FakeUserInterface::showStatusItem(const StatusItem& item, Perform perform) {
    calls_.add("userInterface.showStatusItem");
    statusItem = item;
    performOfStatusItem = std::move(perform);
}

void FakeUserInterface::removeStatusItem() {
    calls_.add("userInterface.removeStatusItem");
    statusItem.reset();
}

void FakeUserInterface::setStartsAtLogin(bool starts) {
    calls_.add(std::string("userInterface.setStartsAtLogin ") + (starts ? "yes" : "no"));
}

void FakeUserInterface::showSettings(SettingsView& view,
                                     const std::optional<std::string>& activationToken) {
    settings = &view;
    calls_.add("userInterface.showSettings" + (activationToken ? " " + *activationToken : ""));
}

std::expected<void, PlatformError> FakeUserInterface::openDocument(
    const std::filesystem::path& file) {
    calls_.add("userInterface.openDocument " + file.string());
    return opened;
}

bool FakePreferences::flag(std::string_view key) const {
    calls_.add("preferences.flag " + std::string(key));
    const auto found = flags.find(key);
    return found != flags.end() && found->second;
}

void FakePreferences::setFlag(std::string_view key, bool value) {
    calls_.add("preferences.setFlag " + std::string(key) + (value ? " true" : " false"));
    flags.insert_or_assign(std::string(key), value);
}

std::optional<std::filesystem::path> FakeScripts::directory() const {
    return folder;
}

std::expected<void, PlatformError> FakeScripts::makeDirectory() {
    calls_.add("scripts.makeDirectory");
    return made;
}

std::optional<std::filesystem::path> FakeScripts::bundledHelper() const {
    return bundled;
}

std::filesystem::path FakeScripts::temporaryDirectory() const {
    return temporary;
}

void FakeScripts::run(const std::filesystem::path& script,
                      const std::vector<std::string>& arguments,
                      const std::optional<std::string>& activationToken,
                      std::function<void(std::expected<void, PlatformError>)> completion) {
    calls_.add("scripts.run " + script.string() + shown({arguments, activationToken}));
    loop_.afterExactly(runTakes, [this, arguments, done = std::move(completion)] {
        if (whenRun) whenRun(arguments);
        done(ran);
    });
}

void FakeScripts::select(const std::filesystem::path& file) {
    calls_.add("scripts.select " + file.string());
}

void FakeScripts::openFolder(const std::filesystem::path& opened) {
    calls_.add("scripts.openFolder " + opened.string());
}

void FakeSavePanel::show(const Question& question, std::function<void(Answer)> completion) {
    calls_.add("savePanel.show " + question.directory.string());
    asked = question;
    if (whenShown) whenShown();
    completion(answer);
}

Platform FakePlatform::platform() {
    return {.desktop = desktop,
            .mainLoop = mainLoop,
            .applications = applications,
            .browser = browser,
            .frontmost = frontmost,
            .launchLock = launchLock,
            .dialogs = dialogs,
            .caller = caller,
            .session = session,
            .userInterface = userInterface,
            .preferences = preferences,
            .scripts = scripts,
            .savePanel = savePanel,
            .isSandboxed = isSandboxed,
            .activationToken = activationToken};
}

}  // namespace ferrivane::test
