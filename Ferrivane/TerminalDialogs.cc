#include "Ferrivane/TerminalDialogs.h"

#include "core/Redact.h"

namespace ferrivane {

void TerminalDialogs::showLaunchFailure(const LaunchFailureAlert& alert) {
    const std::string link = Redact::url(alert.link, isTerminal_);
    std::string reason = alert.reason;
    // Some reasons end in the link.
    if (!alert.link.empty() && reason.ends_with(alert.link)) {
        reason.replace(reason.size() - alert.link.size(), alert.link.size(), link);
    }
    stream_ << alert.title << ": " << reason << "\n" << link << std::endl;
}

}  // namespace ferrivane
