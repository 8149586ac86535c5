// The desktop's registry of applications. Main thread only.
//
// An application is named by its bundle identifier (on Linux the desktop entry's id without
// ".desktop") and found by its location (the bundle; on Linux the desktop entry's file).
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "Ferrivane/platform/Browser.h"
#include "core/Opener.h"

namespace ferrivane {

class Applications {
  public:
    // What the running program's own bundle says of itself.
    struct Bundle {
        std::optional<std::string> identifier;  // absent for a bare executable
        std::optional<std::string> version;
        std::filesystem::path location = {};  // empty for a bare executable
    };

    // A process of an application; what it does not report is absent.
    struct Running {
        pid_t process = 0;
        std::optional<std::string> name{};
        std::optional<std::string> bundleId{};
        std::optional<std::string> path{};  // as openers name it
    };

    virtual ~Applications() = default;

    // Chrome's identifier stands for whichever browser of its family was located.
    virtual std::optional<std::filesystem::path> location(std::string_view bundleId) const = 0;
    virtual std::optional<std::filesystem::path> executable(
        const std::filesystem::path& application) const = 0;
    // Absent when it has none.
    virtual std::optional<std::string> identifier(
        const std::filesystem::path& application) const = 0;
    // The application that opens links of a scheme.
    virtual std::optional<std::filesystem::path> handler(std::string_view scheme) const = 0;
    // Makes an application the one that opens links of a scheme, which may need the person's word.
    // The completion is called exactly once, perhaps before the call returns. That nothing was
    // refused does not mean that the handler is another one now.
    virtual void setHandler(const std::filesystem::path& application, std::string_view scheme,
                            std::function<void(std::expected<void, PlatformError>)> completion) = 0;
    // A setting of the person's that wins over those of setHandler, and what to change in it, in
    // one line. `unchanged` are the schemes that have another handler still.
    virtual std::optional<std::string> overridingSetting(
        const std::filesystem::path& application,
        const std::vector<std::string_view>& unchanged) const = 0;
    virtual std::vector<pid_t> running(std::string_view bundleId) const = 0;
    // The applications that a person sees as running, in the desktop's order.
    virtual std::vector<Running> runningApplications() const = 0;
    // The application that a process belongs to; on Linux the one that it opened a link for, which
    // a start-up id may tell too. Absent when it is gone, 0 or unknown.
    virtual std::optional<Opener> runningApplication(pid_t process,
                                                     const std::string& startupId) const = 0;
    virtual Bundle ownBundle() const = 0;
    // What a sentence calls an application.
    virtual std::string displayName(const std::filesystem::path& application) const = 0;
    // The order of names in the person's language, whatever their case.
    virtual bool comesBefore(const std::string& name, const std::string& other) const = 0;
};

}  // namespace ferrivane
