#include <gtest/gtest.h>

#include "core/Redact.h"

namespace ferrivane {
namespace {

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

TEST(Redact, KeepsSchemeAndHost) {
    const struct {
        const char* name;
        const char* link;
        const char* redacted;
    } rows[] = {
        {"path, query and fragment", "https://h/secret?q=secret#secret", "https://h/…"},
        {"no path", "https://h", "https://h/…"},
        {"port", "https://h:8443/", "https://h/…"},
        {"user and password", "https://user:secret@h/", "https://h/…"},
        {"case is kept", "HTTPS://Host.Example/x", "HTTPS://Host.Example/…"},
        {"no scheme", "//h/secret", "?://h/…"},
        {"another scheme", "ftp://h/secret", "ftp://h/…"},
        {"IPv6", "http://[::1]:80/secret", "http://[::1]/…"},
        {"letters beyond ASCII", "https://bücher.example/secret", "https://bücher.example/…"},
        {"the host that the browser visits", R"(https://evil.example\@work.example/)",
         "https://evil.example/…"},
        {"tabs and line breaks", "https://wo\trk.\nexample/secret", "https://work.example/…"},
        {"invalid UTF-8 in the path", "https://h/\xFF", "https://h/…"},
    };
    for (const auto& row : rows) EXPECT_EQ(Redact::url(row.link, false), row.redacted) << row.name;
}

TEST(Redact, WithoutAHostTheFirst24Characters) {
    const struct {
        const char* name;
        std::string link;
        std::string redacted;
    } rows[] = {
        {"mail address", "mailto:someone.with.a.long.name", "mailto:someone.with.a.lo…"},
        {"exactly 24", "mailto:" + std::string(17, 'a'), "mailto:" + std::string(17, 'a')},
        {"25", "mailto:" + std::string(18, 'a'), "mailto:" + std::string(17, 'a') + "…"},
        {"empty", "", ""},
        {"words", "some words that are no link", "some words that are no l…"},
        {"host that cannot be", "https://a%2eb/0123456789abcdef", "https://a%2eb/0123456789…"},
        {"relative path", "a/b", "a/b"},
        {"a megabyte", std::string(1'000'000, 'a'), std::string(24, 'a') + "…"},
    };
    for (const auto& row : rows) EXPECT_EQ(Redact::url(row.link, false), row.redacted) << row.name;
}

// Each is one character to a person; 24 of them stay whole, the 25th is cut off whole.
TEST(Redact, CountsCharactersAsAPersonDoes) {
    const struct {
        const char* name;
        std::string_view character;
    } rows[] = {
        {"letter", "a"},
        {"umlaut", "ü"},
        {"letter and accent", "e\u0301"},
        {"letter and three accents", "a\u0323\u0302\u0301"},
        {"emoji", "😀"},
        {"family of joined emoji", "👨‍👩‍👧‍👦"},
        {"woman at a computer", "👩‍💻"},
        {"emoji with a skin colour", "👍🏽"},
        {"heart as emoji", "❤\uFE0F"},
        {"flag", "🇫🇷"},
        {"flag of tags", "🏴󠁧󠁢󠁳󠁣󠁴󠁿"},
        {"keycap", "1\uFE0F\u20E3"},
        {"carriage return and line feed", "\r\n"},
        {"Hangul syllable of parts", "\u1100\u1161\u11A8"},
        {"Devanagari with a vowel sign", "\u0915\u093F"},
        {"Thai with a vowel and a tone", "\u0E01\u0E34\u0E49"},
        {"invalid byte", "\xFF"},
        {"cut character", "\xF0\x9F\x98"},
        {"overlong form", "\xC0"},
        {"zero-width space", "\u200B"},
        {"right-to-left override", "\u202E"},
        {"NUL", std::string_view("\0", 1)},
    };
    for (const auto& row : rows) {
        const std::string text = repeated(row.character, 24);
        EXPECT_EQ(Redact::url(text, false), text) << row.name;
        EXPECT_EQ(Redact::url(text + std::string(row.character), false), text + "…") << row.name;
        EXPECT_EQ(Redact::url(text + "xyz", false), text + "…") << row.name;
    }
}

TEST(Redact, CharactersOfDifferentKindsSideBySide) {
    const struct {
        const char* name;
        std::string link;
        std::string redacted;
    } rows[] = {
        {"accents without a letter belong together", repeated("\u0301", 100),
         repeated("\u0301", 100)},
        {"ten thousand accents on one letter", "a" + repeated("\u0301", 10'000),
         "a" + repeated("\u0301", 10'000)},
        {"a carriage return joins the line feed behind it only", repeated("\n\r", 24),
         "\n" + repeated("\r\n", 23) + "…"},
        {"an accent does not join an invalid byte", repeated("\xFF\u0301", 12) + "x",
         repeated("\xFF\u0301", 12) + "…"},
        {"49 regional letters are 25 flags", repeated("🇦", 49), repeated("🇦", 48) + "…"},
        {"a flag is not joined across an invalid byte", repeated("🇦\xFF", 12) + "🇦🇦",
         repeated("🇦\xFF", 12) + "…"},
    };
    for (const auto& row : rows) EXPECT_EQ(Redact::url(row.link, false), row.redacted) << row.name;
}

TEST(Redact, InFullTheTextIsUnchanged) {
    for (const std::string& text : {
             std::string(),
             std::string("https://u:p@h:1/p?q#f"),
             std::string(100, 'x'),
             std::string("\xFF\0\n", 3),
             std::string(1'000'000, 'x'),
         }) {
        EXPECT_EQ(Redact::url(text, true), text);
    }
}

}  // namespace
}  // namespace ferrivane
