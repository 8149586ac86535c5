// Which application is in front, and bringing another one there. Main thread only.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include <sys/types.h>

#include "Ferrivane/platform/Browser.h"

namespace ferrivane {

class Frontmost {
  public:
    struct Application {
        std::optional<pid_t> process;     // absent: no application is in front
        std::optional<std::string> name;  // as the desktop shows it
    };

    virtual ~Frontmost() = default;

    // Absent where the desktop does not tell.
    virtual std::optional<Application> current() const = 0;
    // Asks for activation handed over from this application, and plainly. Whether the desktop took
    // the request.
    virtual bool activateHandedOver(pid_t process) = 0;
    virtual bool activate(pid_t process) = 0;
    // Opens the application without a document, to activate it, and without listing it as recently
    // used. The completion is called exactly once.
    virtual void open(const std::filesystem::path& location,
                      std::function<void(std::expected<void, PlatformError>)> completion) = 0;
};

}  // namespace ferrivane
