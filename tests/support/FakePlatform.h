// A desktop that exists in memory only: implements every port of the application, behaves as the
// test tells it, and writes down every call in order. Its clock moves only when the test moves it.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Ferrivane/platform/Platform.h"

namespace ferrivane {

// For the test library, which would show the object's bytes, those that nobody set among them.
inline void PrintTo(const PlatformError& error, std::ostream* out) {
    *out << error.text;
}

}  // namespace ferrivane

namespace ferrivane::test {

// The calls of all ports, each as "port.operation arguments" with the time at which it came.
class CallList {
  public:
    using Clock = std::chrono::steady_clock;

    void add(std::string text) { calls_.emplace_back(now_, std::move(text)); }

    std::vector<std::string> texts() const;
    // "400 ms: port.operation arguments"
    std::vector<std::string> timedTexts() const;
    // Those that begin with one of these texts.
    std::vector<std::string> of(const std::vector<std::string>& beginnings) const;
    std::size_t count(std::string_view beginning) const;
    bool empty() const { return calls_.empty(); }
    void clear() { calls_.clear(); }

  private:
    friend class FakeMainLoop;
    Clock::duration now_{};  // since the start of the test
    std::vector<std::pair<Clock::duration, std::string>> calls_;
};

// Its own calls are not written down: what they set off is.
class FakeMainLoop : public MainLoop {
  public:
    using Duration = CallList::Clock::duration;

    explicit FakeMainLoop(CallList& calls) : calls_(calls) {}

    std::chrono::steady_clock::time_point now() const override;
    void after(std::chrono::milliseconds delay, std::function<void()> work) override {
        afterExactly(delay, std::move(work));
    }
    void runUntilIdle() override;
    // Until nothing can happen any more, if nobody stops it.
    void run() override;
    void stop() override { isStopped_ = true; }

    // For the test: finer than a millisecond.
    void afterExactly(Duration delay, std::function<void()> work);
    // Lets this much time pass; what falls due on the way is done at its time.
    void advance(Duration time);
    Duration elapsed() const { return calls_.now_; }
    bool isIdle() const { return timers_.empty(); }
    bool isStopped() const { return isStopped_; }

  private:
    void runNext();

    CallList& calls_;
    std::map<std::pair<Duration, std::uint64_t>, std::function<void()>> timers_;
    std::uint64_t sequence_ = 0;
    bool isStopped_ = false;
};

class FakeApplications : public Applications {
  public:
    FakeApplications(CallList& calls, FakeMainLoop& loop) : calls_(calls), loop_(loop) {}

    std::map<std::string, std::filesystem::path, std::less<>> locations{
        {"com.google.Chrome", "/apps/google-chrome.desktop"}};
    std::map<std::filesystem::path, std::filesystem::path> executables{
        {"/apps/google-chrome.desktop", "/opt/chrome/chrome"}};
    std::map<std::filesystem::path, std::string> identifiers{
        {"/apps/google-chrome.desktop", "google-chrome"}};
    std::map<std::string, std::filesystem::path, std::less<>> handlers;  // by scheme
    std::map<std::string, PlatformError, std::less<>> refusals;          // by scheme
    std::set<std::string, std::less<>> deafSchemes;  // accept a handler and keep the old one
    FakeMainLoop::Duration setHandlerTakes{};
    std::optional<std::string> setting;                                // overridingSetting()
    std::map<std::string, std::vector<pid_t>, std::less<>> processes;  // by bundle identifier
    std::map<pid_t, Opener> openers;                                   // by process
    Bundle bundle;
    std::vector<Running> applicationsRunning;

    std::optional<std::filesystem::path> location(std::string_view bundleId) const override;
    std::optional<std::filesystem::path> executable(
        const std::filesystem::path& application) const override;
    std::optional<std::string> identifier(const std::filesystem::path& application) const override;
    std::optional<std::filesystem::path> handler(std::string_view scheme) const override;
    void setHandler(const std::filesystem::path& application, std::string_view scheme,
                    std::function<void(std::expected<void, PlatformError>)> completion) override;
    std::optional<std::string> overridingSetting(
        const std::filesystem::path& application,
        const std::vector<std::string_view>& unchanged) const override;
    std::vector<pid_t> running(std::string_view bundleId) const override;
    std::optional<Opener> runningApplication(pid_t process,
                                             const std::string& startupId) const override;
    std::vector<Running> runningApplications() const override;
    Bundle ownBundle() const override;
    // The file's name without its extension.
    std::string displayName(const std::filesystem::path& application) const override;
    bool comesBefore(const std::string& name, const std::string& other) const override;

  private:
    CallList& calls_;
    FakeMainLoop& loop_;
};

class FakeBrowser : public Browser {
  public:
    FakeBrowser(CallList& calls, FakeMainLoop& loop) : calls_(calls), loop_(loop) {}

    std::optional<pid_t> process;       // running()
    std::set<pid_t> answeringAsChrome;  // isRunning()

    std::expected<pid_t, PlatformError> launched = 500;
    FakeMainLoop::Duration launchTakes{};  // none: the completion is called before launch returns

    std::expected<pid_t, PlatformError> relay = 600;
    std::optional<FakeMainLoop::Duration> relayTakes =
        std::chrono::milliseconds(50);  // absent: never ends
    int relayStatus = 0;

    // What the last start was given.
    std::optional<Arguments> given;

    void locate() override;
    std::optional<pid_t> running() const override;
    bool isRunning(pid_t asked) const override;
    void launch(const std::filesystem::path& location, const Arguments& arguments,
                std::function<void(std::expected<pid_t, PlatformError>)> completion) override;
    void openLink(const std::filesystem::path& location, const Arguments& link,
                  std::function<void(std::expected<pid_t, PlatformError>)> completion) override;
    std::expected<pid_t, PlatformError> startRelay(
        const std::filesystem::path& executable, const Arguments& arguments,
        std::function<void(int status)> completion) override;
    void abandonRelay(pid_t relayProcess) override;

  private:
    CallList& calls_;
    FakeMainLoop& loop_;
    std::set<pid_t> awaited_;  // relays
};

class FakeFrontmost : public Frontmost {
  public:
    FakeFrontmost(CallList& calls, FakeMainLoop& loop) : calls_(calls), loop_(loop) {}

    std::optional<Application> front;
    bool handsOver = false;
    bool activates = true;
    std::expected<void, PlatformError> opened;
    FakeMainLoop::Duration openTakes{};

    std::optional<Application> current() const override;
    bool activateHandedOver(pid_t process) override;
    bool activate(pid_t process) override;
    void open(const std::filesystem::path& location,
              std::function<void(std::expected<void, PlatformError>)> completion) override;

  private:
    CallList& calls_;
    FakeMainLoop& loop_;
};

class FakeLaunchLock : public LaunchLock {
  public:
    explicit FakeLaunchLock(CallList& calls) : calls_(calls) {}

    bool heldElsewhere = false;
    bool held = false;

    bool tryAcquire() override;
    void release() override;

  private:
    CallList& calls_;
};

class FakeDialogs : public Dialogs {
  public:
    explicit FakeDialogs(CallList& calls) : calls_(calls) {}

    std::vector<LaunchFailureAlert> alerts;

    void showLaunchFailure(const LaunchFailureAlert& alert) override;

  private:
    CallList& calls_;
};

class FakeCaller : public Caller {
  public:
    explicit FakeCaller(CallList& calls) : calls_(calls) {}

    std::optional<Opener> application;
    // Called at the moment of release, when somebody outside would look.
    std::function<void()> whenReleased;

    void detach() override;
    void release(int status) override;
    std::optional<Opener> opener() const override;

  private:
    CallList& calls_;
};

class FakeSession : public Session {
  public:
    explicit FakeSession(CallList& calls) : calls_(calls) {}

    Place place = Place::resident;
    bool reopens = true;
    ApplicationEvents* events = nullptr;  // once joined

    Place join(ApplicationEvents& receiver) override;
    void leave() override;
    bool reopenResident(const std::optional<std::string>& activationToken) override;

  private:
    CallList& calls_;
};

class FakeUserInterface : public UserInterface {
  public:
    explicit FakeUserInterface(CallList& calls) : calls_(calls) {}

    std::vector<Menu> mainMenu;
    std::optional<StatusItem> statusItem;
    SettingsView* settings = nullptr;  // once shown
    Perform performOfMainMenu;
    Perform performOfStatusItem;
    std::expected<void, PlatformError> opened;

    void installMainMenu(const std::vector<Menu>& menus, Perform perform) override;
    void showStatusItem(const StatusItem& item, Perform perform) override;
    void removeStatusItem() override;
    void setStartsAtLogin(bool starts) override;
    void showSettings(SettingsView& view,
                      const std::optional<std::string>& activationToken) override;
    std::expected<void, PlatformError> openDocument(const std::filesystem::path& file) override;

  private:
    CallList& calls_;
};

class FakePreferences : public Preferences {
  public:
    explicit FakePreferences(CallList& calls) : calls_(calls) {}

    std::map<std::string, bool, std::less<>> flags;

    bool flag(std::string_view key) const override;
    void setFlag(std::string_view key, bool value) override;

  private:
    CallList& calls_;
};

class FakeScripts : public Scripts {
  public:
    FakeScripts(CallList& calls, FakeMainLoop& loop) : calls_(calls), loop_(loop) {}

    std::optional<std::filesystem::path> folder;
    std::expected<void, PlatformError> made;
    std::optional<std::filesystem::path> bundled;
    std::filesystem::path temporary = "/nowhere";
    std::expected<void, PlatformError> ran;
    FakeMainLoop::Duration runTakes = std::chrono::milliseconds(50);
    // What the script does, just before it ends.
    std::function<void(const std::vector<std::string>& arguments)> whenRun;

    std::optional<std::filesystem::path> directory() const override;
    std::expected<void, PlatformError> makeDirectory() override;
    std::optional<std::filesystem::path> bundledHelper() const override;
    std::filesystem::path temporaryDirectory() const override;
    void run(const std::filesystem::path& script, const std::vector<std::string>& arguments,
             const std::optional<std::string>& activationToken,
             std::function<void(std::expected<void, PlatformError>)> completion) override;
    void select(const std::filesystem::path& file) override;
    void openFolder(const std::filesystem::path& opened) override;

  private:
    CallList& calls_;
    FakeMainLoop& loop_;
};

class FakeSavePanel : public SavePanel {
  public:
    explicit FakeSavePanel(CallList& calls) : calls_(calls) {}

    Answer answer;
    std::optional<Question> asked;
    std::function<void()> whenShown;

    void show(const Question& question, std::function<void(Answer)> completion) override;

  private:
    CallList& calls_;
};

class FakePlatform {
  public:
    FakePlatform() = default;
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    // The application's view, with whatever token is set now.
    Platform platform();

    Desktop desktop = Desktop::freedesktop;
    bool isSandboxed = false;
    std::optional<std::string> activationToken;

    CallList calls;
    FakeMainLoop mainLoop{calls};
    FakeApplications applications{calls, mainLoop};
    FakeBrowser browser{calls, mainLoop};
    FakeFrontmost frontmost{calls, mainLoop};
    FakeLaunchLock launchLock{calls};
    FakeDialogs dialogs{calls};
    FakeCaller caller{calls};
    FakeSession session{calls};
    FakeUserInterface userInterface{calls};
    FakePreferences preferences{calls};
    FakeScripts scripts{calls, mainLoop};
    FakeSavePanel savePanel{calls};
};

}  // namespace ferrivane::test
