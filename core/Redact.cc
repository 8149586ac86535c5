#include "core/Redact.h"

#include "core/support/Text.h"
#include "core/support/Url.h"

namespace ferrivane::Redact {

std::string url(std::string_view text, bool full) {
    if (full) return std::string(text);
    if (const auto parsed = Url::parse(text); parsed && parsed->host) {
        return parsed->scheme.value_or("?") + "://" + *parsed->host + "/…";
    }
    constexpr std::size_t kShownCharacters = 24;
    const auto length = Text::prefixLength(text, kShownCharacters);
    if (!length || *length == text.size()) return std::string(text);
    return std::string(text.substr(0, *length)) + "…";
}

}  // namespace ferrivane::Redact
