// Alerts one after another, for a desktop whose alerts stop whoever shows them. Main thread only.
#pragma once

#include <deque>
#include <functional>

#include "Ferrivane/platform/Dialogs.h"
#include "Ferrivane/platform/MainLoop.h"

namespace ferrivane {

class AlertQueue {
  public:
    // The log has told of those that find so many before them.
    static constexpr std::size_t mostWaiting = 100;
    // Returns once the alert is closed. The main loop may run meanwhile, and more may be added.
    using Show = std::function<void(const LaunchFailureAlert&)>;

    // The loop outlives this.
    AlertQueue(MainLoop& loop, Show show) : loop_(loop), show_(std::move(show)) {}

    // Returns at once: a link is not on its way any longer for being told of.
    void add(const LaunchFailureAlert& alert);

  private:
    void showNext();

    MainLoop& loop_;
    const Show show_;
    std::deque<LaunchFailureAlert> alerts_;  // the first is shown
};

}  // namespace ferrivane
