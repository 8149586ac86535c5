#include "Ferrivane/TerminalDialogs.h"

#include "core/Redact.h"

namespace ferrivane {

void TerminalDialogs::showLaunchFailure(const LaunchFailureAlert& alert) {
    const std::string link = Redact::url(alert.link, isTerminal_);
    std::string reason = alert.reason;
    // Some reasons quote the link.
    if (const std::size_t quoted = reason.find(alert.link);
        quoted != std::string::npos && !alert.link.empty()) {
        reason.replace(quoted, alert.link.size(), link);
    }
    stream_ << alert.title << ": " << reason << "\n" << link << std::endl;
}

}  // namespace ferrivane
