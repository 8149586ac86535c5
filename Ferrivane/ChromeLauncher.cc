#include "Ferrivane/ChromeLauncher.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

#include "Ferrivane/HelperScript.h"
#include "core/ChromeSingleton.h"
#include "core/support/Url.h"

namespace ferrivane::ChromeLauncher {
namespace {

using namespace std::chrono_literals;

constexpr double kSingletonTimeoutSeconds = 5.0;
constexpr auto kFrontmostDelay = 400ms;  // lets the hand-over's own activation settle
constexpr auto kLockInterval = 2ms;
constexpr auto kLockLimit = 10s;
constexpr auto kRelayInterval = 100ms;
constexpr auto kRelayLimit = 30s;  // a relay that finds Chrome hung replaces it after about 20 s

bool hasNul(const std::vector<std::string>& argv) {
    return std::ranges::any_of(
        argv, [](const std::string& text) { return text.find('\0') != std::string::npos; });
}

// Bringing Chrome to the front after a hand-over. Copies what it needs: it outlives the launch.
struct Front {
    Platform platform;
    Log& log;

    void bring(const std::filesystem::path& chrome, pid_t process) const {
        platform.frontmost.open(chrome, [*this, process](const auto& opened) {
            if (!opened) log.warn("could not activate Chrome: " + opened.error().text);
            ensure(process);
        });
    }

    void ensure(pid_t process) const {
        platform.mainLoop.after(kFrontmostDelay, [*this, process] { check(process); });
    }

    void check(pid_t process) const {
        const auto front = platform.frontmost.current();
        if (!front || front->process == process) return;
        const bool handedOver = platform.frontmost.activateHandedOver(process);
        if (!handedOver) platform.frontmost.activate(process);
        log.warn("Chrome was not frontmost (front: " + front->name.value_or("none") +
                 "); activated it (handover=" + (handedOver ? "true" : "false") + ")");
    }
};

// One link on its way to Chrome. Keeps itself alive through the callbacks it leaves behind; holds
// the launch lock from "is Chrome running?" until the outcome is known.
class Launch : public std::enable_shared_from_this<Launch> {
  public:
    Launch(const Platform& platform, Log& log, std::filesystem::path chrome, const Request& request,
           std::function<void(Outcome)> completion)
        : platform_(platform),
          log_(log),
          chrome_(std::move(chrome)),
          request_(request),
          completion_(std::move(completion)),
          started_(platform.mainLoop.now()) {}

    void waitForLock() {
        locked_ = platform_.launchLock.tryAcquire();
        if (!locked_ && platform_.mainLoop.now() - started_ < kLockLimit) {
            platform_.mainLoop.after(kLockInterval,
                                     [self = shared_from_this()] { self->waitForLock(); });
            return;
        }
        if (!locked_) log_.warn("another link has been on its way for 10 s; not waiting for it");
        chooseRoute();
    }

  private:
    // The routes, all in one place.
    void chooseRoute() {
        const auto running = platform_.browser.running();
        if (!platform_.isSandboxed) return running ? handOver(*running) : coldLaunch();
        if (HelperScript::isInstalled(platform_)) {
            return running ? scriptHandOver(*running) : scriptLaunch();
        }
        log_.warn("helper script not installed; opening in Chrome without a profile");
        openLinkAlone();
    }

    Browser::Arguments switches() const {
        return {arguments(request_.url, request_.profileDirectory), request_.activationToken};
    }

    void handOver(pid_t process) {
        const auto executable = platform_.applications.executable(chrome_);
        if (!executable) {
            return finish(failure(LaunchError::Kind::noExecutable, chrome_.string()));
        }

        std::vector<std::string> argv = switches().switches;
        if (request_.activationToken) {
            argv.insert(argv.end() - 1, "--xdg-activation-token=" + *request_.activationToken);
        }
        argv.insert(argv.begin(), executable->string());

        std::expected<void, ChromeSingleton::SingletonError> sent;
        const auto socket = ChromeSingleton::socketPath(ChromeSingleton::userDataDirectory());
        if (socket) {
            sent = ChromeSingleton::notify(argv, *socket, kSingletonTimeoutSeconds);
        } else {
            sent = std::unexpected(socket.error());
        }
        if (!sent) {
            log_.warn("singleton socket not used (" + sent.error().description() +
                      "); starting Chrome's binary instead");
            return relay(*executable, process);
        }
        finish(handedTo(process) + " over its singleton socket");
        Front{platform_, log_}.bring(chrome_, process);
    }

    void relay(const std::filesystem::path& executable, pid_t process) {
        const auto relayProcess = platform_.browser.startRelay(
            executable, switches(), [self = shared_from_this(), process](int status) {
                self->finish(handedTo(process) + "; helper exited " + std::to_string(status));
                Front{self->platform_, self->log_}.ensure(process);
            });
        if (!relayProcess) {
            return finish(failure(LaunchError::Kind::platform, relayProcess.error().text));
        }
        watchRelay(*relayProcess, process, platform_.mainLoop.now() + kRelayLimit);
    }

    // A relay that finds no Chrome listening becomes the browser itself and may run for days.
    void watchRelay(pid_t relayProcess, pid_t process, std::chrono::steady_clock::time_point end) {
        if (!completion_) return;
        const bool isBrowser = platform_.browser.isRunning(relayProcess);
        if (isBrowser || platform_.mainLoop.now() >= end) {
            platform_.browser.abandonRelay(relayProcess);
            if (!isBrowser) Front{platform_, log_}.ensure(process);
            finish(isBrowser ? launched(relayProcess)
                             : handedTo(process) + "; helper still running");
            return;
        }
        platform_.mainLoop.after(kRelayInterval,
                                 [self = shared_from_this(), relayProcess, process, end] {
                                     self->watchRelay(relayProcess, process, end);
                                 });
    }

    void coldLaunch() {
        platform_.browser.launch(
            chrome_, switches(), [self = shared_from_this()](const auto& process) {
                self->finish(process ? Outcome(launched(*process))
                                     : failure(LaunchError::Kind::platform, process.error().text));
            });
    }

    // A sandboxed process can only ask: `command` is one of the script's.
    void runScript(const std::string& command, const std::filesystem::path& application,
                   const std::function<std::string()>& opened) {
        std::vector<std::string> words = switches().switches;
        words.insert(words.begin(), {command, application.string()});
        HelperScript::run(
            platform_, words, request_.activationToken,
            [self = shared_from_this(), opened](const HelperScript::Result& result) {
                if (result) return self->finish(opened());
                self->finish(failure(LaunchError::Kind::platform, result.error().description()));
            });
    }

    void scriptHandOver(pid_t process) {
        const auto executable = platform_.applications.executable(chrome_);
        if (!executable) {
            return finish(failure(LaunchError::Kind::noExecutable, chrome_.string()));
        }
        runScript("open", *executable, [this, process] {
            Front{platform_, log_}.ensure(process);
            return handedTo(process) + " through the helper script";
        });
    }

    void scriptLaunch() {
        std::optional<std::filesystem::path> application = chrome_;
        if (platform_.desktop != Desktop::macOS) {
            application = platform_.applications.executable(chrome_);
        }
        if (!application) {
            return finish(failure(LaunchError::Kind::noExecutable, chrome_.string()));
        }
        runScript("launch", *application,
                  [] { return "launched Chrome through the helper script"; });
    }

    void openLinkAlone() {
        if (!Url::parse(request_.url)) {
            return finish(failure(LaunchError::Kind::malformedURL, request_.url));
        }
        platform_.browser.openLink(
            chrome_, {arguments(request_.url, std::nullopt), request_.activationToken},
            [self = shared_from_this()](const auto& process) {
                if (!process) {
                    return self->finish(failure(LaunchError::Kind::platform, process.error().text));
                }
                self->finish("opened in Chrome (pid " + std::to_string(*process) +
                             ") without a profile — helper script missing");
            });
    }

    static std::string handedTo(pid_t process) {
        return "handed to running Chrome (pid " + std::to_string(process) + ")";
    }
    static std::string launched(pid_t process) {
        return "launched Chrome (pid " + std::to_string(process) + ")";
    }
    static Outcome failure(LaunchError::Kind kind, std::string text) {
        return std::unexpected(LaunchError{kind, std::move(text)});
    }

    void finish(Outcome outcome) {
        if (std::exchange(locked_, false)) platform_.launchLock.release();
        std::exchange(completion_, nullptr)(std::move(outcome));
    }

    const Platform platform_;
    Log& log_;
    const std::filesystem::path chrome_;
    const Request request_;
    std::function<void(Outcome)> completion_;
    const std::chrono::steady_clock::time_point started_;
    bool locked_ = false;
};

}  // namespace

std::string LaunchError::description() const {
    switch (kind) {
        case Kind::noExecutable:
            return "no executable inside " + text;
        case Kind::malformedURL:
            return "not a URL: " + text;
        case Kind::chromeNotFound:
            return "Google Chrome is not installed";
        case Kind::platform:
            return text;
    }
    return text;
}

void open(const Platform& platform, Log& log, const Request& request,
          std::function<void(Outcome)> completion) {
    std::error_code ignored;
    std::vector<std::string> texts = arguments(request.url, request.profileDirectory);
    texts.push_back(request.activationToken.value_or(""));
    texts.push_back(std::filesystem::current_path(ignored).string());
    if (isSwitch(request.url) || hasNul(texts)) {
        return completion(
            std::unexpected(LaunchError{LaunchError::Kind::malformedURL, request.url}));
    }
    const auto chrome = chromeAppURL(platform.applications);
    if (!chrome) return completion(std::unexpected(LaunchError{}));
    std::make_shared<Launch>(platform, log, *chrome, request, std::move(completion))->waitForLock();
}

std::optional<std::filesystem::path> chromeAppURL(const Applications& applications,
                                                  const std::filesystem::path& fallback) {
    if (auto registered = applications.location(chromeBundleIdentifier)) return registered;
    std::error_code error;
    if (std::filesystem::exists(fallback, error)) return fallback;
    return std::nullopt;
}

bool sandboxMarkerPresent() {
    return std::getenv("APP_SANDBOX_CONTAINER_ID") != nullptr;  // NOLINT(concurrency-mt-unsafe)
}

bool isSandboxed() {
    static const bool sandboxed = sandboxMarkerPresent();
    return sandboxed;
}

bool isSwitch(std::string_view url) {
    constexpr std::string_view kAsciiSpace(" \t\n\v\f\r");
    const std::size_t start = url.find_first_not_of(kAsciiSpace);
    return start != std::string_view::npos && url[start] == '-';
}

std::vector<std::string> arguments(const std::string& url,
                                   const std::optional<std::string>& profileDirectory) {
    if (!profileDirectory) return {url};
    return {"--profile-directory=" + *profileDirectory, url};
}

}  // namespace ferrivane::ChromeLauncher
