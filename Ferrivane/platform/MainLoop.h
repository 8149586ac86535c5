// The main thread's clock, its delayed work, and its life.
#pragma once

#include <chrono>
#include <functional>

namespace ferrivane {

class MainLoop {
  public:
    virtual ~MainLoop() = default;

    // A clock that never jumps.
    virtual std::chrono::steady_clock::time_point now() const = 0;

    // Runs `work` on the main thread once `delay` has passed, never before this call returns.
    // Main thread only.
    virtual void after(std::chrono::milliseconds delay, std::function<void()> work) = 0;

    // Runs until nothing is left to wait for: no delayed work, no child process whose end was asked
    // for, no open alert. Main thread only.
    virtual void runUntilIdle() = 0;

    // Runs until stop is called, be it before, with or without anything to wait for. Main thread
    // only.
    virtual void run() = 0;
    virtual void stop() = 0;
};

}  // namespace ferrivane
