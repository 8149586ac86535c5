// Always granted: one process serves all links, one after another, and Launch Services starts an
// application only once.
#pragma once

#include "Ferrivane/platform/LaunchLock.h"

namespace ferrivane {

class MacLaunchLock : public LaunchLock {
  public:
    bool tryAcquire() override { return true; }
    void release() override {}
};

}  // namespace ferrivane
