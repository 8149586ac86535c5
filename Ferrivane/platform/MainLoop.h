// The main thread's clock and its delayed work.
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

    // Runs until nothing is left to wait for: no delayed work and no child process whose end was
    // asked for. Main thread only.
    virtual void runUntilIdle() = 0;
};

}  // namespace ferrivane
