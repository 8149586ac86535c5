// The main loop over the main thread's run loop, and over AppKit's where there is an application
// object.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#import <Foundation/Foundation.h>

#include "Ferrivane/platform/MainLoop.h"

namespace ferrivane {

class MacMainLoop : public MainLoop {
  public:
    std::chrono::steady_clock::time_point now() const override;
    // By a timer of the run loop's common modes. Unlike a block on the main queue its work does not
    // keep others waiting while it shows an alert.
    void after(std::chrono::milliseconds delay, std::function<void()> work) override;
    void runUntilIdle() override;
    void run() override;
    void stop() override;

    // What stop does instead of ending AppKit's loop.
    void whenStopped(std::function<void()> work) { stopped_ = std::move(work); }

    // The loop is not idle between these two, and the system lets the process work at full speed.
    // Main thread only.
    void retain();
    void release();

    // What the system may call once, on any thread, for a completion that belongs to the main
    // thread: it is called there, and let go of there. The loop is not idle before that.
    template<typename Value>
    std::function<void(Value)> awaiting(std::function<void(Value)> completion) {
        retain();
        auto held = std::make_shared<std::function<void(Value)>>(std::move(completion));
        return [this, held](Value value) {
            finish([held, value] { std::exchange(*held, nullptr)(value); });
        };
    }

    // Makes a running [NSApp run] return, once no alert is open. Main thread only.
    void leaveApplication();

  private:
    // Releases, and does the work, later on the main thread. From any thread.
    void finish(std::function<void()> work);

    int retained_ = 0;
    id<NSObject> activity_ = nil;
    std::function<void()> stopped_;
    bool isStopped_ = false;
};

}  // namespace ferrivane
