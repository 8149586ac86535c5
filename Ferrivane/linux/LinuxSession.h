// The session as its D-Bus shows it.
#pragma once

#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/platform/Session.h"

namespace ferrivane {

class LinuxSession : public Session {
  public:
    // The loop outlives this.
    explicit LinuxSession(EventLoop& loop) : loop_(loop) {}

    Place join(ApplicationEvents& events) override;
    void leave() override;
    bool reopenResident(const std::optional<std::string>& activationToken) override;

  private:
    EventLoop& loop_;
};

}  // namespace ferrivane
