// Launch Services lets an application run once: this process is the resident one.
#pragma once

#import "Ferrivane/macos/ApplicationDelegate.h"
#include "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/platform/Session.h"

namespace ferrivane {

class MacSession : public Session {
  public:
    // The loop outlives this.
    explicit MacSession(MacMainLoop& loop) : loop_(loop) {}

    // Makes the application object, without an icon in the Dock, and returns once it has finished
    // launching. The link that caused the launch may have come by then.
    Place join(ApplicationEvents& events) override;
    // Nothing: what comes while links are on their way is one more of them.
    void leave() override {}
    // False for a bare executable, which Launch Services cannot start.
    bool reopenResident(const std::optional<std::string>&) override;

  private:
    MacMainLoop& loop_;
    FVApplicationDelegate* delegate_ = nil;
};

}  // namespace ferrivane
