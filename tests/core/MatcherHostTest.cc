#include <gtest/gtest.h>

#include "core/Matcher.h"

namespace ferrivane {
namespace {

struct Row {
    const char* name;
    const char* pattern;
    const char* link;
    bool result;
};

void check(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        const Rule rule(Rule::Kind::host, row.pattern, "p");
        EXPECT_EQ(Matcher::matches(rule, row.link, std::nullopt), row.result) << row.name;
    }
}

TEST(MatcherHost, TheHostOrASubdomainOfIt) {
    check({
        {"the host", "a.b", "https://a.b/c", true},
        {"a subdomain", "a.b", "https://x.a.b/", true},
        {"a subdomain of that", "a.b", "https://y.x.a.b", true},
        {"any mix of case", "A.B", "https://W.a.B", true},
        {"the boundary is a dot", "a.b", "https://xa.b", false},
        {"a longer domain", "a.b", "https://a.b.c", false},
        {"the host is part of the pattern", "x.a.b", "https://a.b", false},
        {"pattern with www", "www.a.b", "https://a.b", false},
        {"pattern with www and such a host", "www.a.b", "https://x.www.a.b", true},
        {"dots around the pattern", "..a.b.", "https://x.a.b", true},
        {"blanks around the pattern", " a.b\n", "https://a.b", true},
        {"blank between the dots", ". a.b", "https://a.b", false},
        {"single label", "localhost", "http://localhost:8080/", true},
        {"top-level label", "b", "https://a.b", true},
        {"empty label inside", "a..b", "https://a..b", true},
        {"host with a final dot", "a.b", "https://a.b./", false},
        {"pattern with a final dot as well", "a.b.", "https://a.b./", false},
        {"dots alone fit a final dot", "..", "https://a.b./", true},
        {"dots alone fit nothing else", "..", "https://a.b/", false},
        {"blank pattern", "   ", "https://a.b", false},
    });
}

TEST(MatcherHost, APatternThatIsMoreThanAHostFitsNothing) {
    check({
        {"scheme", "https://a.b", "https://a.b", false},
        {"scheme alone", "https://", "https://a.b", false},
        {"port", "a.b:443", "https://a.b:443", false},
        {"path", "a.b/", "https://a.b/", false},
        {"wildcard", "*.a.b", "https://x.a.b", false},
        {"user name", "me@a.b", "https://me@a.b", false},
    });
    EXPECT_TRUE(Matcher::matches(Rule(Rule::Kind::url, "https://", "p"), "https://a.b", {}));
}

TEST(MatcherHost, TheRestOfTheLinkDoesNotMatter) {
    check({
        {"port, user, path, query, fragment", "a.b", "https://u:p@a.b:8443/c?d#e", true},
        {"another scheme", "a.b", "ftp://a.b/c", true},
        {"no scheme", "a.b", "//a.b/c", true},
        {"in the path", "a.b", "https://c.d/a.b", false},
        {"in the query", "a.b", "https://c.d?x.a.b", false},
        {"in the user name", "a.b", "https://a.b@c.d", false},
        {"mail address", "a.b", "mailto:someone@a.b", false},
        {"text that is no link", "a.b", "a.b", false},
        {"words", "a.b", "see a.b", false},
        {"empty", "a.b", "", false},
    });
}

TEST(MatcherHost, SeesTheHostThatTheBrowserWillVisit) {
    check({
        {"backslash ends the host", "evil.example", R"(https://evil.example\@work.example/)", true},
        {"so the other is not it", "work.example", R"(https://evil.example\@work.example/)", false},
        {"the last @ ends the user", "c.d", "https://a.b@x@c.d/", true},
        {"and nothing before it counts", "a.b", "https://a.b@x@c.d/", false},
        {"tab in the host", "work.example", "https://work\t.example/", true},
        {"line break in the scheme", "work.example", "ht\ntps://work.example/", true},
        {"carriage return in the slashes", "work.example", "https:/\r/work.example/", true},
        {"leading blanks and controls", "work.example", " \x01\thttps://work.example/", true},
        {"trailing blanks", "work.example", "https://work.example \n", true},
        {"no slashes", "work.example", "https:work.example/x", true},
        {"one slash", "work.example", "https:/work.example", true},
        {"many slashes", "work.example", R"(https:\\//work.example)", true},
        {"capitals in scheme and host", "work.example", "HTTPS://WORK.example", true},
        {"IPv6", "[::1]", "http://[::1]:80/", true},
        {"IPv6 without brackets", "::1", "http://[::1]:80/", false},
        {"IPv4", "127.0.0.1", "http://user@127.0.0.1:80/", true},
        {"percent-encoded host is none", "work.example", "https://work%2eexample/", false},
        {"blank in the host", "work.example", "https://a work.example/", false},
        {"port out of range", "work.example", "https://work.example:99999/", false},
        {"punycode as it is written", "xn--bcher-kva.example", "https://xn--bcher-kva.example/",
         true},
        {"punycode is not decoded", "bücher.example", "https://xn--bcher-kva.example/", false},
    });
}

TEST(MatcherHost, LettersBeyondAsciiAreComparedInLowerCase) {
    check({
        {"capital umlaut", "bücher.example", "https://BÜCHER.example", true},
        {"composed and decomposed", "caf\u00E9.example", "https://cafe\u0301.example", true},
        {"capital and decomposed", "CAFE\u0301.example", "https://caf\u00E9.example", true},
        {"accents are kept", "cafe.example", "https://café.example", false},
        {"sharp s is a letter of its own", "strasse.example", "https://straße.example", false},
        {"capital sharp s", "STRA\u1E9EE.example", "https://straße.example", true},
        {"final sigma is a letter of its own", "νόσοσ.example", "https://νόσος.example", false},
        {"capital sigma is not the final one", "ΝΌΣΟΣ.example", "https://νόσοσ.example", true},
        {"capital i with a dot", "İ.example", "https://i\u0307.example", true},
        {"Kelvin sign", "\u212A.example", "https://k.example", true},
    });
}

}  // namespace
}  // namespace ferrivane
