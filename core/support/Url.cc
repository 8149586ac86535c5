#include "core/support/Url.h"

#include <algorithm>
#include <charconv>

#include "core/support/Text.h"

namespace ferrivane {
namespace {

bool isAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isHex(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool isControlOrSpace(char c) {
    return static_cast<unsigned char>(c) <= 0x20;
}
bool isOneOf(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

bool isUnreserved(char c) {
    return isAlpha(c) || isDigit(c) || isOneOf(c, "-._~");
}
bool isSubDelimiter(char c) {
    return isOneOf(c, "!$&'()*+,;=");
}

// Only characters that RFC 3986 allows in every part of a URI, these delimiters, and whole
// percent-encodings.
bool consistsOf(std::string_view text, std::string_view delimiters) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2])) return false;
        } else if (!isUnreserved(c) && !isSubDelimiter(c) && !isOneOf(c, delimiters)) {
            return false;
        }
    }
    return true;
}

bool isBracketed(std::string_view host) {
    return host.size() > 2 && host.starts_with('[') && host.ends_with(']');
}

// Inside brackets: an IPv6 address, in characters only. Whether the address makes sense is the
// browser's business.
bool isIpLiteral(std::string_view host) {
    return isBracketed(host) && std::ranges::all_of(host.substr(1, host.size() - 2), [](char c) {
               return isHex(c) || c == ':' || c == '.';
           });
}

// Inside brackets: an address of a version to come, "v1.x" (section 3.2.2). No browser takes one.
bool isFutureLiteral(std::string_view host) {
    if (!isBracketed(host) || (host[1] != 'v' && host[1] != 'V')) return false;
    const std::string_view inside = host.substr(2, host.size() - 3);
    const std::size_t dot = std::min(inside.find('.'), inside.size());
    const std::string_view address = inside.substr(std::min(dot + 1, inside.size()));
    return dot > 0 && std::ranges::all_of(inside.substr(0, dot), isHex) && !address.empty() &&
           address.find('%') == std::string_view::npos && consistsOf(address, ":");
}

struct HostAndPort {
    std::string_view host;
    std::string_view port;  // without the colon
};

HostAndPort splitPort(std::string_view authority) {
    const std::size_t bracket = authority.rfind(']');
    const std::size_t colon = authority.rfind(':');
    if (colon == std::string_view::npos || (bracket != std::string_view::npos && colon < bracket)) {
        return {authority, {}};
    }
    return {authority.substr(0, colon), authority.substr(colon + 1)};
}

std::string_view withoutUserInformation(std::string_view authority) {
    const std::size_t at = authority.rfind('@');
    return at == std::string_view::npos ? authority : authority.substr(at + 1);
}

// The forbidden domain code points of the URL Standard, section 3.5. Bytes beyond ASCII stay.
bool isForbiddenInHost(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7F || isOneOf(c, "#/:<>?@[\\]^|%");
}

std::optional<std::string> webHost(std::string_view authority) {
    const auto [host, port] = splitPort(withoutUserInformation(authority));
    unsigned number = 0;
    if (!port.empty()) {
        const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
        if (error != std::errc() || end != port.data() + port.size() || number > 65535) return {};
    }
    if (host.empty()) return {};
    if (!isIpLiteral(host) && std::ranges::any_of(host, isForbiddenInHost)) return {};
    return std::string(host);
}

// What Chrome sees of a text: no tabs and line breaks, no outer controls and blanks.
std::string cleaned(std::string_view text) {
    while (!text.empty() && isControlOrSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isControlOrSpace(text.back())) text.remove_suffix(1);
    std::string result(text);
    std::erase_if(result, [](char c) { return c == '\t' || c == '\n' || c == '\r'; });
    return result;
}

bool isWebScheme(std::string_view scheme) {
    return Text::equalIgnoringCase(scheme, "http") || Text::equalIgnoringCase(scheme, "https");
}

Url parseWeb(std::string_view text, std::string_view scheme) {
    std::string_view rest = text.substr(scheme.size() + 1);
    rest.remove_prefix(std::min(rest.find_first_not_of("/\\"), rest.size()));
    return {std::string(scheme), webHost(rest.substr(0, rest.find_first_of("/\\?#")))};
}

// Host and user information of RFC 3986, section 3.2.
std::optional<std::string_view> genericHost(std::string_view authority) {
    if (const std::size_t at = authority.find('@'); at != std::string_view::npos) {
        if (!consistsOf(authority.substr(0, at), ":")) return std::nullopt;
        authority.remove_prefix(at + 1);
    }
    const auto [host, port] = splitPort(authority);
    if (!std::ranges::all_of(port, isDigit)) return std::nullopt;
    if (!consistsOf(host, "") && !isIpLiteral(host) && !isFutureLiteral(host)) return std::nullopt;
    return host;
}

std::optional<Url> parseGeneric(std::string_view text) {
    if (text.empty()) return std::nullopt;
    Url url;
    std::string_view rest = text;
    if (const auto scheme = Url::schemeOf(text)) {
        url.scheme = *scheme;
        rest.remove_prefix(scheme->size() + 1);
    } else if (const std::size_t colon = text.find(':');
               colon != std::string_view::npos && colon < text.find_first_of("/?#")) {
        return std::nullopt;  // a first segment with a colon needs a scheme (section 4.2)
    }
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        const std::string_view authority = rest.substr(0, rest.find_first_of("/?#"));
        rest.remove_prefix(authority.size());
        const auto host = genericHost(authority);
        if (!host) return std::nullopt;
        if (!host->empty()) url.host = *host;
    }
    // Path and query up to the first "#", the fragment behind it.
    const std::size_t end = std::min(rest.find('#'), rest.size());
    constexpr std::string_view kDelimiters = ":@/?";
    if (!consistsOf(rest.substr(0, end), kDelimiters)) return std::nullopt;
    if (end < rest.size() && !consistsOf(rest.substr(end + 1), kDelimiters)) return std::nullopt;
    return url;
}

}  // namespace

std::optional<std::string_view> Url::schemeOf(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || !isAlpha(text[0])) return std::nullopt;
    const std::string_view scheme = text.substr(0, colon);
    const bool isValid = std::ranges::all_of(
        scheme, [](char c) { return isAlpha(c) || isDigit(c) || isOneOf(c, "+-."); });
    return isValid ? std::optional(scheme) : std::nullopt;
}

std::optional<Url> Url::parse(std::string_view text) {
    const std::string seen = cleaned(text);
    const auto scheme = schemeOf(seen);
    if (scheme && isWebScheme(*scheme)) return parseWeb(seen, *scheme);
    return parseGeneric(text);
}

}  // namespace ferrivane
