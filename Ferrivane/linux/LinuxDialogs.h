// Alerts: on standard error at once, and in a window where there is a display.
#pragma once

#include <deque>
#include <ostream>

#include "Ferrivane/TerminalDialogs.h"
#include "Ferrivane/linux/EventLoop.h"

namespace ferrivane {

class LinuxDialogs : public Dialogs {
  public:
    // One after another. The log has told of those that find so many before them.
    static constexpr std::size_t mostWaiting = 100;

    // Begins with the alerts that a program before this one has left. Both references outlive this.
    LinuxDialogs(EventLoop& loop, std::ostream& stream, bool isTerminal);

    // Returns at once. The loop is not idle before the last window is closed and, after "Copy
    // Link", the clipboard is no longer needed.
    void showLaunchFailure(const LaunchFailureAlert& alert) override;

  private:
    void showSoon();
    void showNext();
    void restartWhenIdle();
    void closed(bool holdsClipboard);

    EventLoop& loop_;
    TerminalDialogs terminal_;
    std::deque<LaunchFailureAlert> alerts_;  // the first is shown
    bool holdsClipboard_ = false;
};

}  // namespace ferrivane
