// The main loop: timers and the ends of child processes. It needs no library; one that has a loop
// of its own can take this one in.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include <sys/types.h>

#include "Ferrivane/platform/MainLoop.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {

class EventLoop : public MainLoop {
  public:
    EventLoop();

    std::chrono::steady_clock::time_point now() const override;
    void after(std::chrono::milliseconds delay, std::function<void()> work) override;
    void runUntilIdle() override;
    void run() override;
    void stop() override { isStopped_ = true; }

    // Calls `ended` with the exit status of a child of this process (128 + the signal's number when
    // a signal ended it), and collects it. The loop is not idle before that.
    void watchChild(pid_t child, std::function<void(int status)> ended);
    // It is still collected once it has ended, but not waited for.
    void forgetChild(pid_t child);

    // Whether there is nothing to wait for.
    bool isIdle() const;

    // The loop is not idle between these two.
    void retain() { ++retained_; }
    void release() { --retained_; }

    // For a library's loop: wait until the descriptor is readable or the time has passed (-1: no
    // limit), then dispatch. From then on `iterate`, one round of that loop, is how this one waits.
    int descriptor() const { return handles_.get(); }
    int timeoutMilliseconds() const;
    void dispatch();
    void waitThrough(std::function<void()> iterate);
    // Called then after two seconds without work, once after each piece of it: ours, or what
    // somebody else notes.
    void whenResting(std::function<void()> rest) { rest_ = std::move(rest); }
    void noteWork();
    bool isTakenIn() const { return iterate_ != nullptr; }

  private:
    using Time = std::chrono::steady_clock::time_point;
    struct Child {
        FileDescriptor handle;                  // pidfd_open(2)
        std::function<void(int status)> ended;  // empty when it is forgotten
    };

    void step();
    void runDueTimers();
    void collectChildren(int timeoutMilliseconds);
    void collect(pid_t child);

    // By time, then by the order in which they were asked for.
    std::map<std::pair<Time, std::uint64_t>, std::function<void()>> timers_;
    std::map<pid_t, Child> children_;
    FileDescriptor handles_;  // epoll(7), of every handle
    std::function<void()> iterate_;
    std::function<void()> rest_;
    std::optional<Time> restAt_;
    Time lastAsked_{};  // after children without a handle
    std::uint64_t sequence_ = 0;
    int retained_ = 0;
    bool isStopped_ = false;
};

}  // namespace ferrivane
