#include "Ferrivane/TerminalDialogs.h"

#include <string>
#include <string_view>

#include "core/Redact.h"

namespace ferrivane {
namespace {

// Control characters, which a terminal would obey and which could forge a line of a log, as their
// bytes in hexadecimal digits: C0, DEL, and C1 as UTF-8 writes it.
std::string withoutControls(std::string_view text) {
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    std::string shown;
    unsigned char before = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isC1 = before == 0xC2 && byte >= 0x80 && byte < 0xA0;
        if (byte < 0x20 || byte == 0x7F || isC1) {
            shown += {'\\', 'x', kHexDigits[byte >> 4], kHexDigits[byte & 0x0F]};
        } else {
            shown += c;
        }
        before = byte;
    }
    return shown;
}

}  // namespace

void TerminalDialogs::showLaunchFailure(const LaunchFailureAlert& alert) {
    const std::string link = Redact::url(alert.link, isTerminal_);
    std::string reason = alert.reason;
    // Some reasons end in the link.
    if (!alert.link.empty() && reason.ends_with(alert.link)) {
        reason.replace(reason.size() - alert.link.size(), alert.link.size(), link);
    }
    stream_ << alert.title << ": " << withoutControls(reason) << "\n"
            << withoutControls(link) << "\n"
            << std::flush;
}

}  // namespace ferrivane
