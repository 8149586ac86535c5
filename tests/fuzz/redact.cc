// What the log shows of a link.
#include "core/Redact.h"

#include "core/support/Text.h"
#include "core/support/Url.h"
#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {
namespace {

constexpr std::string_view kSecret = "zq9secret";
constexpr std::size_t kShownCharacters = 24;

void check(std::string_view link) {
    require(Redact::url(link, true) == link, "in full the text is unchanged");
    const std::string shown = Redact::url(link, false);
    const auto url = Url::parse(link);
    if (url && url->host) {
        require(shown == url->scheme.value_or("?") + "://" + *url->host + "/…", "scheme and host");
        return;
    }
    const auto length = Text::prefixLength(link, kShownCharacters);
    if (!length || *length == link.size()) return require(shown == link, "a short text is shown");
    require(shown == std::string(link.substr(0, *length)) + "…", "a long text is cut");
}

// Whatever stands in front, a secret behind the host does not reach the log.
void checkSecrets(std::string_view input) {
    std::string joined(input);  // as in a link of the web
    std::erase_if(joined, [](char c) { return c == '\t' || c == '\n' || c == '\r'; });
    if (joined.contains(kSecret)) return;
    for (const char* before : {"/", "/x/", "?q=", "#", "\\", "/\t", "/;@"}) {
        const std::string link = std::string(input) + before + std::string(kSecret);
        const auto url = Url::parse(link);
        if (!url || !url->host || *url->host == kSecret) continue;
        const bool isShown = Redact::url(link, false).find(kSecret) != std::string::npos;
        require(!isShown, "path, query and fragment are not shown");
    }
    for (const char* scheme : {"https://", "ftp://", "//"}) {
        std::string link(scheme);
        link.append(kSecret).append(":").append(kSecret).append("@").append(input);
        const auto url = Url::parse(link);
        if (!url || !url->host || url->host->starts_with(kSecret)) continue;
        const bool isShown = Redact::url(link, false).find(kSecret) != std::string::npos;
        require(!isShown, "user and password are not shown");
    }
}

}  // namespace

void run(std::string_view input) {
    check(input);
    checkSecrets(input);
}

}  // namespace ferrivane::fuzz
