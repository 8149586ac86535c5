// The main loop of a process without a desktop library: timers and the ends of child processes.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "Ferrivane/platform/MainLoop.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {

class EventLoop : public MainLoop {
  public:
    std::chrono::steady_clock::time_point now() const override;
    void after(std::chrono::milliseconds delay, std::function<void()> work) override;
    void runUntilIdle() override;

    // Calls `ended` with the exit status of a child of this process (128 + the signal's number when
    // a signal ended it), and collects it. The loop is not idle before that.
    void watchChild(pid_t child, std::function<void(int status)> ended);
    void forgetChild(pid_t child) { children_.erase(child); }

  private:
    using Time = std::chrono::steady_clock::time_point;
    struct Child {
        FileDescriptor handle;  // pidfd_open(2)
        std::function<void(int status)> ended;
    };

    void runDueTimers();
    void waitForChildren(int timeoutMilliseconds);

    // By time, then by the order in which they were asked for.
    std::map<std::pair<Time, std::uint64_t>, std::function<void()>> timers_;
    std::map<pid_t, Child> children_;
    std::uint64_t sequence_ = 0;
};

}  // namespace ferrivane
