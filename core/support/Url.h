// Finds the scheme and the host of a link.
//
// For http and https the host is the one that Chrome will visit, following the WHATWG URL Standard
// where it differs from RFC 3986: tabs and line breaks are removed, outer control characters and
// blanks stripped, any number of slashes or backslashes (also none) begins the authority. Every
// other text is read by RFC 3986 as it stands. Scheme and host are kept as written: no
// lower-casing, no IDNA, no percent-decoding, no rewriting of IPv4 numbers; an IPv6 host keeps its
// brackets.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ferrivane {

struct Url {
    std::optional<std::string> scheme;
    std::optional<std::string> host;  // never empty

    // Absent when `text` is not a URL at all. Pure; callable from any thread.
    static std::optional<Url> parse(std::string_view text);

    // The scheme that `text` begins with, followed by ":" (RFC 3986, section 3.1); absent
    // otherwise.
    static std::optional<std::string_view> schemeOf(std::string_view text);

    bool operator==(const Url&) const = default;
};

}  // namespace ferrivane
