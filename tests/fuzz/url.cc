// The host of a link. For schemes other than http and https the whole grammar of RFC 3986,
// appendix A, is held against the reader; the web's are held against a browser's parser elsewhere.
#include "core/support/Url.h"

#include <algorithm>

#include "core/Matcher.h"
#include "core/support/Text.h"
#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {
namespace {

constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kHexDigits = "0123456789ABCDEFabcdef";
constexpr std::string_view kUnencoded =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=";

// Takes from the front of `text` what the grammar allows there.
struct Grammar {
    std::string_view text;

    std::string_view take(std::string_view characters, bool encoded = false) {
        std::size_t end = 0;
        while (end < text.size()) {
            if (encoded && text[end] == '%' && end + 2 < text.size() &&
                kHexDigits.find(text[end + 1]) != std::string_view::npos &&
                kHexDigits.find(text[end + 2]) != std::string_view::npos) {
                end += 3;
            } else if (characters.find(text[end]) != std::string_view::npos) {
                ++end;
            } else {
                break;
            }
        }
        return taken(end);
    }
    bool takeOne(char c) { return text.starts_with(c) && taken(1).size() == 1; }
    std::string_view taken(std::size_t count) {
        const std::string_view result = text.substr(0, count);
        text.remove_prefix(count);
        return result;
    }
    static std::string with(std::string_view more) {
        return std::string(kUnencoded) + std::string(more);
    }

    std::string_view scheme() {
        const std::string_view before = text;
        const std::string characters = std::string(kLetters) + std::string(kDigits) + "+-.";
        const std::string_view name = take(characters);
        if (!name.empty() && kLetters.find(name[0]) != std::string_view::npos && takeOne(':')) {
            return name;
        }
        text = before;
        return {};
    }
    std::string_view host() {
        const std::string_view before = text;
        if (!takeOne('[')) return take(kUnencoded, true);
        const bool isWhole =
            takeOne('v') || takeOne('V')
                ? !take(kHexDigits).empty() && takeOne('.') && !take(with(":")).empty()
                : !take(std::string(kHexDigits) + ":.").empty();
        if (isWhole && takeOne(']')) return before.substr(0, before.size() - text.size());
        text = before;  // nothing may begin with a bracket here
        return {};
    }
    std::string_view authority() {
        const std::string_view before = text;
        take(with(":"), true);
        if (!takeOne('@')) text = before;
        const std::string_view name = host();
        if (takeOne(':')) take(kDigits);
        return name;
    }
};

std::optional<Url> readByGrammar(std::string_view text) {
    if (text.empty()) return std::nullopt;
    Grammar grammar{text};
    Url url;
    if (const auto scheme = grammar.scheme(); !scheme.empty()) url.scheme = scheme;
    if (grammar.text.starts_with("//")) {
        grammar.taken(2);
        if (const auto host = grammar.authority(); !host.empty()) url.host = host;
        if (!grammar.text.empty() && !std::string_view("/?#").contains(grammar.text[0])) {
            return std::nullopt;
        }
    } else if (!url.scheme && grammar.take(Grammar::with("@"), true).data() != nullptr &&
               grammar.text.starts_with(':')) {
        return std::nullopt;
    }
    grammar.take(Grammar::with(":@/"), true);
    if (grammar.takeOne('?')) grammar.take(Grammar::with(":@/?"), true);
    if (grammar.takeOne('#')) grammar.take(Grammar::with(":@/?"), true);
    return grammar.text.empty() ? std::optional(url) : std::nullopt;
}

bool isWeb(const std::string& scheme) {
    return Text::equalIgnoringCase(scheme, "http") || Text::equalIgnoringCase(scheme, "https");
}

void checkHost(std::string_view link, const Url& url) {
    const std::string& host = *url.host;
    require(!host.empty(), "a host is not empty");
    std::string seen(link);
    std::erase_if(seen, [](char c) { return c == '\t' || c == '\n' || c == '\r'; });
    require(seen.find(host) != std::string::npos, "the host stands in the link");
    require(host.find_first_of("/\\?#@") == std::string::npos, "nothing of the rest is in it");

    const std::string bare = (url.scheme ? *url.scheme + ":" : "") + "//" + host;
    for (const char* rest : {"", "/", "/a@b:1", "?c@d/e", "#f@g/h", ":80/"}) {
        require(Url::parse(bare + rest) == url, "the host is the same whatever follows it");
    }
    // A rule for the host fits, but for the dots at its ends.
    if (Text::trim(host) == host && !host.ends_with('.')) {
        const Rule rule(Rule::Kind::host, host, "p");
        require(Matcher::matches(rule, link, std::nullopt), "a rule for the host fits");
    }
}

}  // namespace

void run(std::string_view input) {
    const auto scheme = Url::schemeOf(input);
    require(!scheme || input.substr(scheme->size()).starts_with(':'), "a colon ends the scheme");
    const auto url = Url::parse(input);
    const bool isOfTheWeb = url && url->scheme && isWeb(*url->scheme);
    if (!isOfTheWeb) require(url == readByGrammar(input), "it is read by the grammar");
    if (url && url->host) checkHost(input, *url);
    if (isOfTheWeb) {
        const auto spaced = Url::parse(" \n" + std::string(input) + "\x01 ");
        require(spaced == url, "controls around a web link do not matter");
    }
}

}  // namespace ferrivane::fuzz
