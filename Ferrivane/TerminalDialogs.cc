#include "Ferrivane/TerminalDialogs.h"

#include <string>
#include <string_view>

#include "core/Redact.h"
#include "core/support/Text.h"

namespace ferrivane {
namespace {

void addHexadecimal(char c, std::string& shown) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    shown += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0x0F]};
}

// Control characters, which a terminal would obey and which could forge a line of a log, as their
// bytes in hexadecimal digits: C0, DEL, and C1 as UTF-8 writes it. What is no UTF-8 shows as
// U+FFFD.
std::string withoutControls(std::string_view bytes) {
    const std::string text = Text::validUtf8(bytes);
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isC1 = byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (isC1) addHexadecimal(text[i++], shown);
        if (isC1 || byte < 0x20 || byte == 0x7F) {
            addHexadecimal(text[i], shown);
        } else {
            shown += text[i];
        }
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
