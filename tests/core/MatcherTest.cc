#include <gtest/gtest.h>

#include "core/Matcher.h"

namespace ferrivane {
namespace {

using Kind = Rule::Kind;

bool matches(Kind kind, const char* pattern, std::string_view link,
             const std::optional<Opener>& opener = std::nullopt) {
    const Rule rule(kind, pattern, "p");
    const bool result = Matcher::matches(rule, link, opener);
    Config config;
    config.rules.push_back(rule);
    EXPECT_EQ(Matcher::decide(link, opener, config).isDefault(), !result);
    return result;
}

TEST(MatcherDecide, WithoutRulesTheDefaultProfile) {
    const Config config{.defaultProfile = "Work", .rules = {}};
    const Decision decision = Matcher::decide("https://a.b/", std::nullopt, config);
    EXPECT_EQ(decision, (Decision{"Work", std::nullopt, std::nullopt}));
    EXPECT_TRUE(decision.isDefault());
}

TEST(MatcherDecide, TheFirstRuleThatMatchesWins) {
    Config config;
    config.rules.emplace_back(Kind::url, "elsewhere", "Zero");
    config.rules.emplace_back(Kind::host, "a.b", "One", "a comment");
    config.rules.emplace_back(Kind::url, "a.b/x", "Two");
    const Decision decision = Matcher::decide("https://a.b/x", std::nullopt, config);
    EXPECT_EQ(decision, (Decision{"One", 1, config.rules[1]}));
    EXPECT_FALSE(decision.isDefault());
    EXPECT_TRUE(Matcher::decide("https://c.d/", std::nullopt, config).isDefault());
    EXPECT_EQ(Matcher::decide("https://c.d/", std::nullopt, config).profile, "Default");
}

TEST(MatcherDecide, AnEmptyOrUnknownProfileWinsAllTheSame) {
    Config config;
    config.rules.emplace_back(Kind::url, "a", "");
    config.rules.emplace_back(Kind::url, "a", "Work");
    const Decision decision = Matcher::decide("a", std::nullopt, config);
    EXPECT_EQ(decision.profile, "");
    EXPECT_EQ(decision.ruleIndex, 0);
    config.defaultProfile = "";
    EXPECT_EQ(Matcher::decide("x", std::nullopt, config).profile, "");
}

TEST(MatcherDecide, FullLoggingPlaysNoPart) {
    Config config{.defaultProfile = "P", .rules = {}, .logFullURLs = true};
    config.rules.emplace_back(Kind::host, "a.b", "Q");
    EXPECT_EQ(Matcher::decide("https://a.b", std::nullopt, config).profile, "Q");
}

TEST(MatcherUrl, FindsThePatternAnywhereInTheText) {
    const struct {
        const char* name;
        const char* pattern;
        std::string_view link;
        bool result;
    } rows[] = {
        {"host and path", "a.b/c", "https://w.a.b/c?d=e", true},
        {"the same in capitals", "A.B/C", "https://w.a.b/c?d=e", true},
        {"capitals in the link", "a.b/c", "HTTPS://W.A.B/C?D=E", true},
        {"scheme", "https://", "https://a.b", true},
        {"scheme of another link", "https://", "http://a.b", false},
        {"query", "d=e", "https://a.b/?d=e", true},
        {"fragment", "#f", "https://a.b/#F", true},
        {"user name", "me@", "https://me@a.b/", true},
        {"nothing is decoded", "a b", "https://h/a%20b", false},
        {"encoded as written", "%2f", "https://h/%2F", true},
        {"whole text", "mailto:someone", "mailto:someone", true},
        {"text that is no link", "some words", "these are SOME WORDS", true},
        {"longer than the link", "https://a.b/", "https://a.b", false},
        {"empty link", "a", "", false},
        {"blanks around", "  a.b\t\r\n", "https://a.b", true},
        {"no-break space around", "\u00A0a.b\u2003", "https://a.b", true},
        {"blanks inside stay", "a  b", "a b", false},
        {"blank pattern", "   ", "a   b", false},
        {"empty pattern", "", "a", false},
        {"blank pattern of other blanks", "\u00A0\u2029\u3000\v\f\u0085", "a", false},
        {"line break in the link", "a.b", "https://\na.b", true},
        {"NUL in the link", "c", std::string_view("a\0c", 3), true},
        {"invalid UTF-8 in the link", "a.b", "\xFF\xFEhttps://A.B", true},
        {"invalid UTF-8 in both",
         "\xFF"
         "b",
         "a\xFF"
         "B",
         true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(matches(Kind::url, row.pattern, row.link), row.result) << row.name;
    }
}

TEST(MatcherApp, ComparesBundleIdNameAndPath) {
    const Opener chat{"Chat Beta", "org.example.Chat", "/Applications/Chat Beta.app"};
    const struct {
        const char* name;
        const char* pattern;
        std::optional<Opener> opener;
        bool result;
    } rows[] = {
        {"no opener", "Chat", std::nullopt, false},
        {"opener without any field", "Chat", Opener(), false},
        {"bundle id", "org.example.Chat", chat, true},
        {"bundle id in other case", "ORG.example.cHAT", chat, true},
        {"part of the bundle id", "org.example", chat, false},
        {"name", "chat beta", chat, true},
        {"blanks around", "\n chat beta ", chat, true},
        {"part of the name without a path", "Chat", Opener{"Chat Beta", {}, {}}, false},
        {"part of the path", "Chat", chat, true},
        {"file name of the path", "chat beta.app", chat, true},
        {"whole path", "/applications/CHAT beta.app", chat, true},
        {"path of another", "/Applications/Chat.app", chat, false},
        {"only a path", "chat", Opener{{}, {}, "/opt/Chat"}, true},
        {"only a bundle id", "chat", Opener{{}, "CHAT", {}}, true},
        {"empty fields", "a", Opener{"", "", ""}, false},
        {"blank pattern and empty fields", " ", Opener{"", "", ""}, false},
        {"link is not looked at", "https", Opener{"x", "y", "z"}, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(matches(Kind::app, row.pattern, "https://a.b", row.opener), row.result)
            << row.name;
    }
}

TEST(MatcherOpener, UrlAndHostRulesDoNotNeedOne) {
    const Opener opener{"a.b", "a.b", "a.b"};
    EXPECT_FALSE(matches(Kind::url, "a.b", "https://c.d", opener));
    EXPECT_FALSE(matches(Kind::host, "a.b", "https://c.d", opener));
    EXPECT_TRUE(matches(Kind::host, "a.b", "https://a.b", opener));
}

TEST(OpenerDescription, IsNameAndIdOrTheFirstThatIsThere) {
    const struct {
        Opener opener;
        const char* description;
    } rows[] = {
        {{"Chat", "org.chat", "/opt/chat"}, "Chat (org.chat)"},
        {{"Chat", "org.chat", {}}, "Chat (org.chat)"},
        {{"Chat", {}, "/opt/chat"}, "Chat"},
        {{"Chat", {}, {}}, "Chat"},
        {{{}, "org.chat", "/opt/chat"}, "org.chat"},
        {{{}, "org.chat", {}}, "org.chat"},
        {{{}, {}, "/opt/chat"}, "/opt/chat"},
        {{{}, {}, {}}, "unknown app"},
        {{"", "", "/opt/chat"}, " ()"},
        {{"", {}, "/opt/chat"}, ""},
        {{{}, "", "/opt/chat"}, ""},
        {{{}, {}, ""}, ""},
    };
    for (const auto& row : rows) EXPECT_EQ(row.opener.description(), row.description);
}

TEST(OpenerEquality, IsThatOfAllFields) {
    const Opener opener{"a", "b", "c"};
    EXPECT_EQ(opener, (Opener{"a", "b", "c"}));
    EXPECT_NE(opener, (Opener{"a", "b", {}}));
    EXPECT_NE(opener, (Opener{"a", "B", "c"}));
    EXPECT_NE(opener, (Opener{"", "b", "c"}));
}

}  // namespace
}  // namespace ferrivane
