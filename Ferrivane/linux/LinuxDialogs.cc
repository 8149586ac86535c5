#include "Ferrivane/linux/LinuxDialogs.h"

#include <chrono>

#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/Restart.h"
#include "Ferrivane/linux/Toolkit.h"
#include "core/Log.h"

namespace ferrivane {

using namespace std::chrono_literals;

// Loading a toolkit takes a while; whoever waits for us is told before.
static constexpr auto kLoadingDelay = 10ms;

LinuxDialogs::LinuxDialogs(EventLoop& loop, std::ostream& stream, bool isTerminal)
    : loop_(loop), terminal_(stream, isTerminal), alerts_(Restart::takeAlerts()) {
    if (!alerts_.empty()) showSoon();
}

void LinuxDialogs::showLaunchFailure(const LaunchFailureAlert& alert) {
    terminal_.showLaunchFailure(alert);
    if (alerts_.size() == mostWaiting) return;
    alerts_.push_back(alert);
    if (alerts_.size() == 1) showSoon();
}

void LinuxDialogs::showSoon() {
    loop_.after(kLoadingDelay, [this] { showNext(); });
}

void LinuxDialogs::showNext() {
    const auto shown = toolkit(loop_);
    if (!shown) return Restart::isDue() ? restartWhenIdle() : alerts_.clear();
    loop_.retain();
    (*shown)->showLaunchFailure(alerts_.front(), [this](bool holds) { closed(holds); });
    bringToFrontSoon(loop_);
}

// A loop with nothing to wait for has no link on its way.
void LinuxDialogs::restartWhenIdle() {
    if (loop_.isIdle()) {
        if (DesktopServices* services = desktopServices()) services->stopServing();
    }
    if (loop_.isIdle()) {
        Log::shared().flush();
        Restart::run(alerts_);
        // Without its name nobody reaches this process any more; the bus will start another one.
        alerts_.clear();
        return loop_.stop();
    }
    loop_.after(kLoadingDelay, [this] { restartWhenIdle(); });
}

void LinuxDialogs::closed(bool holdsClipboard) {
    if (holdsClipboard && !holdsClipboard_) {
        holdsClipboard_ = true;
        loop_.retain();
        (*toolkit(loop_))->whenClipboardIsFree([this] {
            holdsClipboard_ = false;
            loop_.release();
        });
    }
    loop_.release();
    alerts_.pop_front();
    if (!alerts_.empty()) loop_.after({}, [this] { showNext(); });
}

}  // namespace ferrivane
