// Lets the process that a caller waits for end early: the work goes on in a child in a session of
// its own, which reports the exit status when there is one.
#pragma once

#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/linux/Senders.h"
#include "Ferrivane/platform/Caller.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {

class DetachedCaller : public Caller {
  public:
    // The entries outlive this.
    explicit DetachedCaller(const DesktopEntries& entries)
        : entries_(entries), origin_(Senders::ownOrigin()) {}

    // Returns in the child. The parent waits for the status and exits with it, or with 1 if the
    // child ends without one. If no child can be made, the work goes on in this process.
    void detach() override;
    void release(int status) override;
    std::optional<Opener> opener() const override { return Senders::opener(origin_, entries_); }

  private:
    const DesktopEntries& entries_;
    const Senders::Origin origin_;
    FileDescriptor report_;
};

}  // namespace ferrivane
