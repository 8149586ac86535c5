#include <gtest/gtest.h>

#include "core/support/Text.h"

namespace ferrivane {
namespace {

using namespace std::string_view_literals;

TEST(TextTrim, RemovesUnicodeWhiteSpaceAtBothEnds) {
    const struct {
        const char* name;
        std::string_view text;
        std::string_view trimmed;
    } rows[] = {
        {"empty", "", ""},
        {"nothing to do", "a b", "a b"},
        {"ASCII blanks", " \t\n\v\f\ra b\r\f\v\n\t ", "a b"},
        {"only blanks", " \u00A0\u3000\n", ""},
        {"no-break space", "\u00A0a\u00A0", "a"},
        {"next line", "\u0085a\u0085", "a"},
        {"Ogham space", "\u1680a\u1680", "a"},
        {"em quad to hair space", "\u2000\u2001\u2005\u200Aa\u2003", "a"},
        {"line and paragraph separators", "\u2028a\u2029", "a"},
        {"narrow no-break, mathematical, ideographic", "\u202F\u205F\u3000a", "a"},
        {"zero-width space is no space", "\u200Ba\u200B", "\u200Ba\u200B"},
        {"byte-order mark is no space", "\uFEFFa", "\uFEFFa"},
        {"NUL is no space", "\0a\0"sv, "\0a\0"sv},
        {"other controls are no space",
         "\x1F"
         "a\x7F",
         "\x1F"
         "a\x7F"},
        {"invalid bytes stay", " \xFF \x85 ", "\xFF \x85"},
        {"the end of a cut space stays", "a\x80\x80", "a\x80\x80"},
        {"one letter of three bytes", "\u20AC", "\u20AC"},
        {"emoji then blank", "😀 ", "😀"},
    };
    for (const auto& row : rows) EXPECT_EQ(Text::trim(row.text), row.trimmed) << row.name;
}

TEST(TextFold, MakesTextsEqualThatDifferOnlyByCase) {
    const struct {
        std::string_view text;
        std::string_view folded;
    } rows[] = {
        {"", ""},
        {"ABC xyz [\\]^_`{|}@", "abc xyz [\\]^_`{|}@"},
        {"ÀÉ", "àé"},
        {"cafe\u0301", "caf\u00E9"},
        {"ß", "ss"},
        {"\u1E9E", "ss"},
        {"ΣΑΣ σας", "σασ σασ"},
        {"İ", "i\u0307"},
        {"ı", "ı"},
        {"\u212A", "k"},
        {"\u017F", "s"},
        {"\uFB03", "ffi"},
        {"\u03B1\u0345\u0313", "\u1F00\u03B9"},
        {"\u1FB3\u0323", "\u03B1\u0323\u03B9"},
        {"A\xFFÉ", "a\xFF\u00E9"},
        {"É\xE2\x82", "\u00E9\xE2\x82"},
        {"\xED\xA0\x80", "\xED\xA0\x80"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Text::foldCase(row.text), row.folded);
        EXPECT_EQ(Text::foldCase(row.folded), row.folded) << "folding again changes nothing";
        EXPECT_TRUE(Text::equalIgnoringCase(row.text, row.folded));
    }
    EXPECT_FALSE(Text::equalIgnoringCase("a", "b"));
    EXPECT_FALSE(Text::equalIgnoringCase("a", "aa"));
    EXPECT_FALSE(Text::equalIgnoringCase("e", "é"));
}

TEST(TextFold, AsciiIsFoldedAtEveryLength) {
    std::string folded;
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string text(length, 'Q');
        EXPECT_TRUE(Text::foldAscii(text, folded));
        EXPECT_EQ(folded, std::string(length, 'q'));
        for (std::size_t i = 0; i < length; ++i) {
            std::string other = text;
            other[i] = '\x80';
            EXPECT_FALSE(Text::foldAscii(other, folded)) << i << " of " << length;
        }
    }
}

TEST(TextFold, LongTextsFoldAsShortOnesDo) {
    const std::string capitals = "É";
    const std::string small = "é";
    for (const int count : {1, 63, 64, 126, 127, 128, 129, 1000}) {
        std::string text;
        std::string expected;
        for (int i = 0; i < count; ++i) {
            text += capitals;
            expected += small;
        }
        EXPECT_EQ(Text::foldCase(text), expected) << count;
        EXPECT_EQ(Text::lowerCase(text), expected) << count;
    }
}

TEST(TextLowerCase, KeepsLettersOfTheirOwn) {
    const struct {
        std::string_view text;
        std::string_view lower;
    } rows[] = {
        {"", ""},
        {"ABC.Example", "abc.example"},
        {"STRAßE", "straße"},
        {"\u1E9E", "ß"},
        {"νόσος", "νόσος"},
        {"ΣΑΣ", "σασ"},
        {"İ", "i\u0307"},
        {"CAFE\u0301", "caf\u00E9"},
        {"\u212A", "k"},
        {"\uFB03", "\uFB03"},
        {"ＡＢ", "ａｂ"},
        {"A\xFFÉ\xC3", "a\xFF\u00E9\xC3"},
    };
    for (const auto& row : rows) EXPECT_EQ(Text::lowerCase(row.text), row.lower);
}

TEST(TextPrefix, CountsCharacters) {
    EXPECT_EQ(Text::prefixLength("", 0), 0U);
    EXPECT_EQ(Text::prefixLength("", 1), std::nullopt);
    EXPECT_EQ(Text::prefixLength("abc", 0), 0U);
    EXPECT_EQ(Text::prefixLength("abc", 2), 2U);
    EXPECT_EQ(Text::prefixLength("abc", 3), 3U);
    EXPECT_EQ(Text::prefixLength("abc", 4), std::nullopt);
    EXPECT_EQ(Text::prefixLength("e\u0301a", 1), 3U);
    EXPECT_EQ(Text::prefixLength("🇫🇷🇩🇪x", 2), 16U);
    EXPECT_EQ(Text::prefixLength("🇫🇷🇩", 2), 12U);
    EXPECT_EQ(Text::prefixLength("\r\n\n", 1), 2U);
    EXPECT_EQ(Text::prefixLength("\xFF\xFF", 1), 1U);
    EXPECT_EQ(Text::prefixLength("a\xE2\x82", 2), 3U);
}

TEST(TextValidUtf8, ReplacesEachInvalidSequenceOnce) {
    const struct {
        const char* name;
        std::string_view bytes;
        std::string_view text;
    } rows[] = {
        {"valid", "aé€😀\0"sv, "aé€😀\0"sv},
        {"lone byte", "\xFF", "\uFFFD"},
        {"two lone bytes", "\x80\x80", "\uFFFD\uFFFD"},
        {"cut after one of two", "\xC3", "\uFFFD"},
        {"cut after two of three", "\xE2\x82", "\uFFFD"},
        {"cut after three of four", "\xF0\x9F\x98", "\uFFFD"},
        {"cut and then a letter",
         "\xE2\x82"
         "a",
         "\uFFFDa"},
        {"cut and then a whole one", "\xE2\xC3\xA9", "\uFFFDé"},
        {"overlong slash", "\xC0\xAF", "\uFFFD\uFFFD"},
        {"overlong of three", "\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},
        {"surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"beyond the last code point", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"last code point", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
        {"five-byte form", "\xF8\x88\x80\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
    };
    for (const auto& row : rows) EXPECT_EQ(Text::validUtf8(row.bytes), row.text) << row.name;
}

}  // namespace
}  // namespace ferrivane
