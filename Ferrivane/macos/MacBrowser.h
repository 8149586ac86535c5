// Google Chrome as macOS lets us see and start it.
#pragma once

#include <map>

#import <Foundation/Foundation.h>

#include "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/platform/Browser.h"

namespace ferrivane {

class MacBrowser : public Browser {
  public:
    // The loop outlives this.
    explicit MacBrowser(MacMainLoop& loop) : loop_(loop) {}

    // Nothing: Launch Services is asked each time, and Chrome's folder is always the same.
    void locate() override {}
    // The first that Launch Services names.
    std::optional<pid_t> running() const override;
    // By Chrome's lock and its singleton socket: a relay is an application of Chrome's too.
    bool isRunning(pid_t process) const override;
    void launch(const std::filesystem::path& location, const Arguments& arguments,
                std::function<void(std::expected<pid_t, PlatformError>)> completion) override;
    void openLink(const std::filesystem::path& location, const Arguments& link,
                  std::function<void(std::expected<pid_t, PlatformError>)> completion) override;
    std::expected<pid_t, PlatformError> startRelay(
        const std::filesystem::path& executable, const Arguments& arguments,
        std::function<void(int status)> completion) override;
    void abandonRelay(pid_t process) override;

  private:
    // The task is kept until its process ends, also when nobody waits any more.
    struct Relay {
        NSTask* task = nil;
        std::function<void(int status)> completion;
    };
    void relayEnded(pid_t process, int status);

    MacMainLoop& loop_;
    std::map<pid_t, Relay> relays_;
};

}  // namespace ferrivane
