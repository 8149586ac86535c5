// Tells on standard error what would otherwise be an alert, for processes without a display.
#pragma once

#include <ostream>

#include "Ferrivane/platform/Dialogs.h"

namespace ferrivane {

class TerminalDialogs : public Dialogs {
  public:
    // Links are shown in full only when a person reads along; otherwise the stream may be
    // somebody's log, and they are shortened as in ours. The stream outlives this.
    TerminalDialogs(std::ostream& stream, bool isTerminal)
        : stream_(stream), isTerminal_(isTerminal) {}

    void showLaunchFailure(const LaunchFailureAlert& alert) override;

  private:
    std::ostream& stream_;
    const bool isTerminal_;
};

}  // namespace ferrivane
