// The desktop session, in which at most one process of ours is the resident application. Main
// thread only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace ferrivane {

// Links that were sent to the application.
struct LinkEvent {
    std::vector<std::string> urls{};  // as they came; macOS sends one at a time
    std::optional<pid_t> sender{};    // absent when it is gone already
    std::string startupId{};          // freedesktop.org, Startup Notification; empty without one
    std::optional<std::string> activationToken{};
};

// What the session asks of the resident application.
class ApplicationEvents {
  public:
    virtual ~ApplicationEvents() = default;

    // Returns when the sender is known and the links are queued. False when none of them was taken.
    virtual bool handleGetURL(const LinkEvent& event) = 0;
    // The event's own links are not looked at.
    virtual void openFiles(const std::vector<std::string>& paths, const LinkEvent& event) = 0;
    // The person starts the application that is already running.
    virtual void reopen(const std::optional<std::string>& activationToken) = 0;
    // One of the desktop entry's actions; false for an unknown one.
    virtual bool performAction(std::string_view name,
                               const std::optional<std::string>& activationToken) = 0;
    // Nothing more will come from the session. It may say so more than once.
    virtual void sessionEnded() = 0;
    // Asks the application to end.
    virtual void terminate() = 0;
};

class Session {
  public:
    enum class Place {
        resident,   // this process; its events come from the main loop
        elsewhere,  // another process is
        alone,      // there is no session to be found in
    };

    virtual ~Session() = default;

    // Once per process. The receiver outlives the main loop's run.
    virtual Place join(ApplicationEvents& events) = 0;
    // What is sent to the application from now on is somebody else's. Everything that was sent
    // before has arrived when this returns.
    virtual void leave() = 0;
    // Sends the reopen event to the resident application, which is started if there is none. False
    // when there is no session.
    virtual bool reopenResident(const std::optional<std::string>& activationToken) = 0;
};

}  // namespace ferrivane
