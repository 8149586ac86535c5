// Nobody waits for more than the process itself: it does not detach.
#pragma once

#include <unistd.h>

#include "Ferrivane/platform/Applications.h"
#include "Ferrivane/platform/Caller.h"

namespace ferrivane {

class MacCaller : public Caller {
  public:
    // The applications outlive this.
    explicit MacCaller(const Applications& applications) : applications_(applications) {}

    void detach() override {}
    void release(int) override {}
    // The application that started this process itself.
    std::optional<Opener> opener() const override {
        return applications_.runningApplication(::getppid(), "");
    }

  private:
    const Applications& applications_;
};

}  // namespace ferrivane
