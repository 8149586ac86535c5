#include <gtest/gtest.h>

#include "core/support/Url.h"

namespace ferrivane {
namespace {

using namespace std::string_view_literals;

struct Row {
    const char* name;
    std::string_view link;
    const char*
        parts;  // scheme and host, each "-" when absent; "no URL" when neither is looked for
};

std::string partsOf(std::string_view link) {
    const auto url = Url::parse(link);
    if (!url) return "no URL";
    return url->scheme.value_or("-") + " " + url->host.value_or("-");
}

void check(std::initializer_list<Row> rows) {
    for (const Row& row : rows) EXPECT_EQ(partsOf(row.link), row.parts) << row.name;
}

TEST(UrlWeb, TheAuthorityIsWhereTheBrowserSeesIt) {
    check({
        {"ordinary", "https://a.b/c?d#e", "https a.b"},
        {"host alone", "http://a.b", "http a.b"},
        {"case is kept", "HTTPS://A.b/", "HTTPS A.b"},
        {"user, password and port", "https://u:p@a.b:8443/", "https a.b"},
        {"backslash ends the authority", R"(https://evil.example\@work.example/)",
         "https evil.example"},
        {"question mark ends it", "https://a.b?@c.d/", "https a.b"},
        {"number sign ends it", "https://a.b#@c.d/", "https a.b"},
        {"last @ ends the user", "https://a@b@c.d/", "https c.d"},
        {"empty user", "https://@a.b/", "https a.b"},
        {"no slashes", "https:a.b/x", "https a.b"},
        {"one slash", "https:/a.b", "https a.b"},
        {"three slashes", "https:///a.b/x", "https a.b"},
        {"slashes and backslashes", R"(https:\/\/a.b\c)", "https a.b"},
        {"IPv6", "http://[::1]:80/", "http [::1]"},
        {"IPv6 with user and no port", "http://u@[2001:DB8::1]", "http [2001:DB8::1]"},
        {"IPv6 with an IPv4 tail", "http://[::ffff:1.2.3.4]/", "http [::ffff:1.2.3.4]"},
        {"final dot", "https://a.b./", "https a.b."},
        {"two dots", "https://a..b/", "https a..b"},
        {"underscore and hyphens", "https://_a-.-b/", "https _a-.-b"},
        {"sub-delimiters", "https://a!$&'()*+,;=b/", "https a!$&'()*+,;=b"},
        {"sub-delimiters at the ends", "https://!a!", "https !a!"},
        {"address of one character", "http://[:]/", "http [:]"},
        {"letters beyond ASCII as they are", "https://BÜCHER.example/", "https BÜCHER.example"},
        {"fullwidth letters as they are", "https://ａ.b/", "https ａ.b"},
        {"invalid UTF-8 as it is", "https://a\xFF.b/", "https a\xFF.b"},
        {"numbers as they are", "http://0x7f.1/", "http 0x7f.1"},
        {"longest port", "https://a.b:65535/", "https a.b"},
        {"zeros before the port", "https://a.b:0000000000000443/", "https a.b"},
        {"empty port", "https://a.b:/", "https a.b"},
        {"invalid bytes in the path", "https://a.b/\xFF\x01", "https a.b"},
        {"blanks in the path", "https://a.b/ c d", "https a.b"},
        {"percent signs in the path", "https://a.b/%", "https a.b"},
        {"bidirectional controls in the path", "https://a.b/\u202Emoc.live", "https a.b"},
    });
}

TEST(UrlWeb, WhatTheBrowserRemovesIsNotThere) {
    check({
        {"blanks and controls around", "\x01\x1F https://a.b/ \x02", "https a.b"},
        {"NUL around", "\0https://a.b\0"sv, "https a.b"},
        {"tab in the scheme", "ht\ttps://a.b", "https a.b"},
        {"line break before the colon", "https\n://a.b", "https a.b"},
        {"line breaks everywhere", "\nh\rt\ttps\n:/\n/a\r.\tb\n/", "https a.b"},
        {"vertical tab stays and is forbidden", "https://a\v.b/", "https -"},
        {"blank inside the scheme", "ht tps://a.b/", "no URL"},
        {"no-break space before", "\u00A0https://a.b/", "no URL"},
    });
}

TEST(UrlWeb, AHostThatNoHostCanHaveIsNone) {
    check({
        {"empty", "https:///", "https -"},
        {"nothing at all", "https:", "https -"},
        {"only a user", "https://u@/", "https -"},
        {"only a port", "https://:80/", "https -"},
        {"percent-encoded", "https://work%2eexample/", "https -"},
        {"blank", "https://a b/", "https -"},
        {"NUL", "https://a\0b/"sv, "https -"},
        {"control character", "https://a\x1F/", "https -"},
        {"delete", "https://a\x7F/", "https -"},
        {"less-than sign", "https://a<b/", "https -"},
        {"greater-than sign", "https://a>b/", "https -"},
        {"caret", "https://a^b/", "https -"},
        {"bar", "https://a|b/", "https -"},
        {"bracket open", "https://a[b/", "https -"},
        {"brackets at the end", "https://a[::1]/", "https -"},
        {"brackets at the start", "https://[::1]a/", "https -"},
        {"brackets never closed", "https://[::1/", "https -"},
        {"empty brackets", "https://[]/", "https -"},
        {"IP address of a version to come", "https://[v1.a]/", "https -"},
        {"letters in brackets", "https://[a.zz]/", "https -"},
        {"letter before the closing bracket", "https://[::g]/", "https -"},
        {"IPv6 without brackets", "https://::1/", "https -"},
        {"two colons", "https://a.b:80:80/", "https -"},
        {"port out of range", "https://a.b:65536/", "https -"},
        {"port far out of range", "https://a.b:99999999999999999999/", "https -"},
        {"port with letters", "https://a.b:80a/", "https -"},
        {"port with a sign", "https://a.b:+80/", "https -"},
        {"negative port", "https://a.b:-1/", "https -"},
        {"encoded port", "https://a.b:%38/", "https -"},
    });
}

TEST(UrlGeneric, EveryOtherTextIsReadAsItStands) {
    check({
        {"another scheme", "ftp://u@A.b:21/c", "ftp A.b"},
        {"mail address", "mailto:someone@a.b", "mailto -"},
        {"no authority", "file:/etc/x", "file -"},
        {"empty authority", "file:///etc/x", "file -"},
        {"scheme relative", "//a.b/c", "- a.b"},
        {"absolute path", "/a.b/c", "- -"},
        {"relative path", "a.b/c", "- -"},
        {"bare host", "a.b", "- -"},
        {"query alone", "?q", "- -"},
        {"host and port look like a scheme", "a.b:80", "a.b -"},
        {"scheme with digits and signs", "a+1-2.c://h", "a+1-2.c h"},
        {"own scheme", "ferrivane://settings", "ferrivane settings"},
        {"percent-encoded host as written", "ftp://a%2Eb/", "ftp a%2Eb"},
        {"IPv6", "ftp://[::1]:21/", "ftp [::1]"},
        {"javascript", "javascript://a.b/%0A1", "javascript a.b"},
        {"colon in the path", "./a:b", "- -"},
        {"web-like scheme", "httpsx://a.b", "httpsx a.b"},
        {"scheme in capitals", "FTP://a.b", "FTP a.b"},
        {"first and last letters", "azAZ://azAZ09/az/AZ", "azAZ azAZ09"},
        {"all digits of an encoding", "ftp://h/%a0%f9%AF%09", "ftp h"},
        {"@ in path, query and fragment", "ftp://u@h/a@b?c@d#e@f", "ftp h"},
        {"marks of a query in a fragment", "ftp://h#a?b/c:d", "ftp h"},
        {"user and password", "ftp://u:p:q@h", "ftp h"},
        {"empty user", "ftp://@h", "ftp h"},
        {"encoded @ in the user", "ftp://u%40v@h", "ftp h"},
        {"IP address of a version to come", "ftp://[v1F.a:b!]:21/", "ftp [v1F.a:b!]"},
        {"the shortest of these", "ftp://[V1.x]", "ftp [V1.x]"},
        {"dots in such an address", "ftp://[v1.a.x.]", "ftp [v1.a.x.]"},
    });
}

TEST(UrlGeneric, WhatIsNotAUrl) {
    check({
        {"empty", "", "no URL"},
        {"blank", " ", "no URL"},
        {"words", "some words", "no URL"},
        {"backslash", R"(ftp://a.b\c)", "no URL"},
        {"letter beyond ASCII", "ftp://bücher.example/", "no URL"},
        {"invalid UTF-8", "ftp://a\xFF/", "no URL"},
        {"control character", "mailto:a\nb", "no URL"},
        {"NUL", "ftp://a.b/\0"sv, "no URL"},
        {"percent sign alone", "ftp://a.b/%", "no URL"},
        {"half an encoding", "ftp://a.b/%4", "no URL"},
        {"wrong second digit", "ftp://a.b/%4g", "no URL"},
        {"wrong first digit", "ftp://a.b/%g4", "no URL"},
        {"leading blank", " mailto:a", "no URL"},
        {"no scheme before the colon", ":a", "no URL"},
        {"scheme that begins with a digit", "1a:b", "no URL"},
        {"such a scheme, and a colon in the path", "1a:b/c:d", "no URL"},
        {"port with letters", "ftp://a.b:x/", "no URL"},
        {"IPv6 without brackets", "ftp://::1/", "no URL"},
        {"brackets in a name", "ftp://a[b]/", "no URL"},
        {"second @", "ftp://a@b@c.d/", "no URL"},
        {"brackets in the user", "ftp://[a]@c.d/", "no URL"},
        {"brackets in the path", "ftp://a.b/[c]", "no URL"},
        {"brackets in a path without authority", "mailto:[c]", "no URL"},
        {"brackets in the query", "ftp://a.b/?[c]", "no URL"},
        {"brackets in the fragment", "ftp://a.b/#[c]", "no URL"},
        {"second number sign", "ftp://a.b/#c#d", "no URL"},
        {"version without a number", "ftp://[v.a]/", "no URL"},
        {"version that is no number", "ftp://[v1g.a]/", "no URL"},
        {"another letter for the version", "ftp://[w1.a]/", "no URL"},
        {"version without an address", "ftp://[v1.]/", "no URL"},
        {"version alone", "ftp://[v1]/", "no URL"},
        {"percent-encoding in such an address", "ftp://[v1.%41]/", "no URL"},
    });
}

TEST(UrlScheme, IsWhatStandsBeforeTheColon) {
    const struct {
        std::string_view text;
        std::optional<std::string_view> scheme;
    } rows[] = {
        {"https://a.b", "https"},  {"a:", "a"},
        {"A+b-c.1:x", "A+b-c.1"},  {"", std::nullopt},
        {":", std::nullopt},       {"abc", std::nullopt},
        {"1a:b", std::nullopt},    {"a b:c", std::nullopt},
        {"/a:b", std::nullopt},    {"-a:b", std::nullopt},
        {" a:b", std::nullopt},    {"a\xC3\xA9:b", std::nullopt},
        {"a\0:b"sv, std::nullopt},
    };
    for (const auto& row : rows) EXPECT_EQ(Url::schemeOf(row.text), row.scheme) << row.text;
}

TEST(UrlParse, AMegabyteIsNoTrouble) {
    const std::string megabyte(1'000'000, 'x');
    EXPECT_EQ(partsOf("https://a.b/" + megabyte), "https a.b");
    EXPECT_EQ(Url::parse("https://" + megabyte)->host, megabyte);
    EXPECT_EQ(partsOf(megabyte), "- -");
    EXPECT_EQ(partsOf("https:" + std::string(1'000'000, '/')), "https -");
    EXPECT_EQ(partsOf(std::string(1'000'000, '\t') + "https://a.b"), "https a.b");
}

}  // namespace
}  // namespace ferrivane
