// What the desktop can do with the located Chrome. Main thread only; every completion is called
// exactly once, on the main thread.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace ferrivane {

// A refusal by the system, in its words: a short phrase without a full stop.
struct PlatformError {
    std::string text;

    bool operator==(const PlatformError&) const = default;
};

class Browser {
  public:
    // The switches of one link. A token that lets the browser come to the front goes into the
    // environment of the started process and nowhere else.
    struct Arguments {
        std::vector<std::string> switches;
        std::optional<std::string> activationToken;
    };

    virtual ~Browser() = default;

    // Looks anew for the installed browser, which may have come, gone or changed. Called before
    // each link and each command.
    virtual void locate() = 0;

    // The process of the running browser; absent when it is not running. In a sandbox nothing of
    // the browser's own is touched to find out.
    virtual std::optional<pid_t> running() const = 0;
    // Whether this process is the running browser now. Unlike running() it may be asked again and
    // again of a browser that hangs.
    virtual bool isRunning(pid_t process) const = 0;

    // Starts the application at `location`. Succeeds with its process (0 when unknown) once links
    // can be handed to it.
    virtual void launch(const std::filesystem::path& location, const Arguments& arguments,
                        std::function<void(std::expected<pid_t, PlatformError>)> completion) = 0;
    // Opens one link and nothing else with the application at `location`. Succeeds with its process
    // (0 when unknown).
    virtual void openLink(const std::filesystem::path& location, const Arguments& link,
                          std::function<void(std::expected<pid_t, PlatformError>)> completion) = 0;
    // Runs the application's executable as a child that is otherwise independent of us: no
    // terminal, no standard streams, not ended by our end. The completion receives its exit status.
    virtual std::expected<pid_t, PlatformError> startRelay(
        const std::filesystem::path& executable, const Arguments& arguments,
        std::function<void(int status)> completion) = 0;
    // Stops waiting for a relay; its completion is not called any more.
    virtual void abandonRelay(pid_t process) = 0;
};

}  // namespace ferrivane
