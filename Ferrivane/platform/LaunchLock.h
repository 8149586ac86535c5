// Keeps the hand-overs and starts of all our processes one after another, where the desktop does
// not see to it that an application is started only once. Main thread only.
#pragma once

namespace ferrivane {

class LaunchLock {
  public:
    virtual ~LaunchLock() = default;

    // Never blocks; false while another process, or this one, holds the lock.
    virtual bool tryAcquire() = 0;
    virtual void release() = 0;
};

}  // namespace ferrivane
