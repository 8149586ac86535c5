// Which letters beyond ASCII are the same to url and app rules: what full case folding and
// canonical composition make the same, in no particular language. Accents are never dropped.
#include <gtest/gtest.h>

#include "core/Matcher.h"

namespace ferrivane {
namespace {

struct Row {
    const char* name;
    const char* pattern;
    const char* text;
    bool result;
};

const Row kRows[] = {
    {"sharp s and SS", "STRASSE", "straße", true},
    {"SS and sharp s", "straße", "STRASSE", true},
    {"capital sharp s", "STRA\u1E9EE", "strasse", true},
    {"sharp s is not one s", "strase", "straße", false},
    {"both small sigmas and the capital", "ΟΔΥΣΣΕΥΣ", "οδυσσευς", true},
    {"final sigma and the other", "νόσος", "νόσοσ", true},
    {"composed and decomposed", "caf\u00E9", "cafe\u0301", true},
    {"decomposed and composed in capitals", "CAFE\u0301", "caf\u00C9", true},
    {"accents are kept", "cafe", "café", false},
    {"accent alone is no difference that counts", "café", "cafe", false},
    {"capital i with a dot and its small form", "İ", "i\u0307", true},
    {"capital i with a dot is no plain i", "İ", "i", false},
    {"dotless i is no i", "ı", "I", false},
    {"Kelvin sign in the pattern", "\u212Aelvin", "kelvin", true},
    {"Kelvin sign in the text", "KELVIN", "\u212Aelvin", true},
    {"Angstrom sign", "\u212B", "å", true},
    {"long s", "\u017Fun", "SUN", true},
    {"ligature", "\uFB01le", "FILE", true},
    {"other ligature inside", "office", "o\uFB03ce", true},
    {"Cyrillic", "ПРИВЕТ", "привет", true},
    {"Cyrillic a is not Latin a", "а", "a", false},
    {"Armenian ligature", "\u0587", "\u0565\u0582", true},
    {"Cherokee", "\u13A0", "\uAB70", true},
    {"Deseret, beyond the basic plane", "\U00010400", "\U00010428", true},
    {"fullwidth letters fold among themselves", "ＡＢＣ", "ａｂｃ", true},
    {"fullwidth is not ASCII", "ａ", "a", false},
    {"several accents in another order", "a\u0323\u0302", "a\u0302\u0323", true},
    {"Hangul from its parts", "\uAC01", "\u1100\u1161\u11A8", true},
    {"emoji", "👩‍💻", "👩‍💻", true},
    {"invalid bytes are themselves", "\xC3", "\xC3", true},
    {"an invalid byte is no other", "\xC3", "\xC4", false},
    {"an invalid byte is no replacement", "\uFFFD", "\xC3", false},
};

TEST(MatcherUnicode, UrlRules) {
    for (const Row& row : kRows) {
        const Rule rule(Rule::Kind::url, row.pattern, "p");
        EXPECT_EQ(Matcher::matches(rule, row.text, std::nullopt), row.result) << row.name;
        // Letters before and after make no difference, an ASCII link neither.
        const std::string inside = std::string("https://h/") + row.text + "/end";
        EXPECT_EQ(Matcher::matches(rule, inside, std::nullopt), row.result) << row.name;
    }
}

TEST(MatcherUnicode, AppRules) {
    for (const Row& row : kRows) {
        const Rule rule(Rule::Kind::app, row.pattern, "p");
        for (const Opener& opener : {Opener{row.text, {}, {}}, Opener{{}, row.text, {}},
                                     Opener{{}, {}, std::string("/x/") + row.text + "/y"}}) {
            EXPECT_EQ(Matcher::matches(rule, "", opener), row.result) << row.name;
        }
    }
}

TEST(MatcherUnicode, APieceOfALetterIsNoMatch) {
    const Rule rule(Rule::Kind::url, "e", "p");
    EXPECT_FALSE(Matcher::matches(rule, "\u00E9", std::nullopt));
    EXPECT_FALSE(Matcher::matches(rule, "e\u0301", std::nullopt));
    EXPECT_TRUE(Matcher::matches(rule, "e\u0301e", std::nullopt));
}

}  // namespace
}  // namespace ferrivane
