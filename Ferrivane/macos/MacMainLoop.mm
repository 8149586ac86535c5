#import "Ferrivane/macos/MacMainLoop.h"

#include <utility>

#import <Cocoa/Cocoa.h>

namespace ferrivane {
namespace {

constexpr std::chrono::milliseconds kModalInterval{100};

void turnRunLoop() {
    constexpr NSTimeInterval kSlice = 0.1;
    @autoreleasepool {
        [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode
                            beforeDate:[NSDate dateWithTimeIntervalSinceNow:kSlice]];
    }
}

}  // namespace

std::chrono::steady_clock::time_point MacMainLoop::now() const {
    return std::chrono::steady_clock::now();
}

void MacMainLoop::after(std::chrono::milliseconds delay, std::function<void()> work) {
    retain();
    NSTimer* const timer =
        [NSTimer timerWithTimeInterval:std::chrono::duration<double>(delay).count()
                               repeats:NO
                                 block:^(NSTimer*) {
                                   release();
                                   work();
                                 }];
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
}

void MacMainLoop::runUntilIdle() {
    while (retained_ > 0) turnRunLoop();
}

void MacMainLoop::run() {
    while (!isStopped_) {
        if (NSApp == nil) {
            turnRunLoop();
        } else {
            @autoreleasepool {
                [NSApp run];
            }
        }
    }
    isStopped_ = false;
}

void MacMainLoop::stop() {
    isStopped_ = true;
    if (stopped_) return stopped_();
    if (NSApp.running) leaveApplication();
}

void MacMainLoop::retain() {
    if (retained_++ > 0) return;
    // Or App Nap would put off the timers of an application without windows.
    activity_ = [NSProcessInfo.processInfo
        beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                          reason:@"Opening a link"];
}

void MacMainLoop::release() {
    if (--retained_ > 0) return;
    [NSProcessInfo.processInfo endActivity:std::exchange(activity_, nil)];
}

void MacMainLoop::finish(std::function<void()> work) {
    dispatch_async(dispatch_get_main_queue(), ^{
      release();
      work();
    });
}

void MacMainLoop::leaveApplication() {
    // An alert would be stopped in its place.
    if (NSApp.modalWindow != nil) return after(kModalInterval, [this] { leaveApplication(); });
    [NSApp stop:nil];
    // The loop looks after its next event whether it is to stop.
    [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0]
             atStart:YES];
}

}  // namespace ferrivane
