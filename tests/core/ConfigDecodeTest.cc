#include <gtest/gtest.h>

#include "core/Config.h"
#include "tests/support/Outcome.h"

namespace ferrivane {
namespace {

using test::outcomeOf;

Config decoded(std::string_view json) {
    auto config = Config::decode(json);
    EXPECT_EQ(outcomeOf(config), "ok") << json;
    return config.value_or(Config{.defaultProfile = "not decoded", .rules = {}});
}

// A rule without its id.
std::string textOf(const Rule& rule) {
    return std::string(rawValue(rule.kind)) + "|" + rule.match + "|" + rule.profile + "|" +
           rule.comment.value_or("no comment");
}

std::vector<std::string> textsOf(const std::vector<Rule>& rules) {
    std::vector<std::string> texts;
    texts.reserve(rules.size());
    for (const Rule& rule : rules) texts.push_back(textOf(rule));
    return texts;
}

using Texts = std::vector<std::string>;

TEST(ConfigDecode, MissingAndNullKeysTakeTheirDefaults) {
    for (const char* json : {
             "{}",
             R"({"defaultProfile": null, "rules": null, "logFullURLs": null})",
             R"({"rules": []})",
             " \n\t{ }\r\n ",
             "\xEF\xBB\xBF{}",
         }) {
        EXPECT_EQ(decoded(json), Config()) << json;
    }
    EXPECT_EQ(Config().defaultProfile, "Default");
    EXPECT_TRUE(Config().rules.empty());
    EXPECT_FALSE(Config().logFullURLs);
}

TEST(ConfigDecode, AnEmptyDefaultProfileIsKept) {
    EXPECT_EQ(decoded(R"({"defaultProfile": ""})").defaultProfile, "");
}

TEST(ConfigDecode, ReadsEveryField) {
    const Config config = decoded(R"({
        "logFullURLs": true,
        "defaultProfile": "Profile 2",
        "rules": [
            {"kind": "url", "match": " a/b ", "profile": "Work", "comment": "first"},
            {"profile": "", "match": "", "kind": "host", "comment": null},
            {"kind": "app", "match": "Chat", "profile": "me@a.b", "comment": ""}
        ]})");
    EXPECT_EQ(config.defaultProfile, "Profile 2");
    EXPECT_TRUE(config.logFullURLs);
    EXPECT_EQ(textsOf(config.rules),
              (Texts{"url| a/b |Work|first", "host|||no comment", "app|Chat|me@a.b|"}));
}

TEST(ConfigDecode, UnknownKeysAreIgnoredWhateverTheyHold) {
    const Config config = decoded(R"({
        "version": 3, "x": {"rules": [{"kind": "nonsense"}], "defaultProfile": 5},
        "y": [1, -2, 3.5, true, null, "t", {"rules": null}, [[]]],
        "rules": [{"id": 5, "kind": "url", "extra": {"kind": 1, "match": [{}]}, "match": "m",
                   "profile": "p", "more": [{"profile": 3}]}],
        "Rules": "not rules", "z": 123456789012345678901234567890})");
    EXPECT_EQ(config.defaultProfile, "Default");
    EXPECT_EQ(textsOf(config.rules), Texts{"url|m|p|no comment"});
}

TEST(ConfigDecode, OfEqualKeysTheLastOneCounts) {
    const struct {
        const char* name;
        const char* json;
        const char* profile;
        Texts rules;
        bool logFullURLs;
    } rows[] = {
        {"default profile", R"({"defaultProfile": "A", "defaultProfile": "B"})", "B", {}, false},
        {"null after a text",
         R"({"defaultProfile": "A", "defaultProfile": null})",
         "Default",
         {},
         false},
        {"flag", R"({"logFullURLs": true, "logFullURLs": false})", "Default", {}, false},
        {"null after a flag",
         R"({"logFullURLs": true, "logFullURLs": null})",
         "Default",
         {},
         false},
        {"rules",
         R"({"rules": [{"kind": "url", "match": "a", "profile": "p"}],
             "rules": [{"kind": "app", "match": "b", "profile": "q"}]})",
         "Default",
         {"app|b|q|no comment"},
         false},
        {"null after rules",
         R"({"rules": [{"kind": "url", "match": "a", "profile": "p"}], "rules": null})",
         "Default",
         {},
         false},
        {"keys of a rule",
         R"({"rules": [{"kind": "url", "kind": "app", "match": "a", "match": "b", "profile": "p",
                        "profile": "q", "comment": "c", "comment": null}]})",
         "Default",
         {"app|b|q|no comment"},
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Config config = decoded(row.json);
        EXPECT_EQ(config.defaultProfile, row.profile);
        EXPECT_EQ(config.logFullURLs, row.logFullURLs);
        EXPECT_EQ(textsOf(config.rules), row.rules);
    }
}

TEST(ConfigDecode, TextsKeepEveryCharacter) {
    const Config config =
        decoded(R"({"defaultProfile": "\u00e9\ud83d\ude00\"\\\/\b\f\n\r\t\u0000é"})");
    const std::string expected = "é😀\"\\/\b\f\n\r\t" + std::string(1, '\0') + "é";
    EXPECT_EQ(config.defaultProfile, expected);
}

TEST(ConfigDecode, ReadingTwiceGivesOtherIds) {
    const char* json = R"({"rules": [{"kind": "url", "match": "a", "profile": "p"}]})";
    const Config first = decoded(json);
    const Config second = decoded(json);
    ASSERT_EQ(textsOf(first.rules), textsOf(second.rules));
    EXPECT_NE(first.rules[0].id, second.rules[0].id);
    EXPECT_NE(first.rules[0], second.rules[0]);
    EXPECT_NE(first, second);
}

TEST(ConfigDecode, DeepNestingInIgnoredKeysIsNoFault) {
    constexpr std::size_t kDepth = 100'000;
    const std::string arrays = std::string(kDepth, '[') + std::string(kDepth, ']');
    std::string objects;
    for (std::size_t i = 0; i < kDepth; ++i) objects += R"({"a":)";
    objects += "1" + std::string(kDepth, '}');
    const std::string rule = R"({"kind": "url", "match": "a", "profile": "p", "x": )";
    for (const std::string& nested : {arrays, objects}) {
        const std::string beside = "{\"x\": " + nested + ", \"defaultProfile\": \"P\"}";
        EXPECT_EQ(decoded(beside).defaultProfile, "P");
        std::string inside = "{\"rules\": [";
        inside.append(rule).append(nested).append("}]}");
        EXPECT_EQ(decoded(inside).rules.size(), 1U);
    }
    for (const char* open : {"{\"x\":", "{\"rules\":", "", "{\"rules\":[{\"x\":"}) {
        const auto outcome = outcomeOf(Config::decode(open + std::string(kDepth, '[')));
        EXPECT_TRUE(outcome.starts_with("line 1")) << outcome.substr(0, 200);
    }
}

TEST(ConfigDecode, KindsAreSpelledExactly) {
    EXPECT_EQ(Rule::kAllKinds, (std::array{Rule::Kind::url, Rule::Kind::host, Rule::Kind::app}));
    EXPECT_EQ(rawValue(Rule::Kind::url), "url");
    EXPECT_EQ(rawValue(Rule::Kind::host), "host");
    EXPECT_EQ(rawValue(Rule::Kind::app), "app");
    for (const Rule::Kind kind : Rule::kAllKinds) EXPECT_EQ(kindFromRawValue(rawValue(kind)), kind);
    for (const char* text : {"Host", "URL", "", " url", "url ", "hosts", "regex"}) {
        EXPECT_EQ(kindFromRawValue(text), std::nullopt) << text;
    }
}

TEST(ConfigDecode, RulesAreEqualOnlyWithEqualIds) {
    const Rule rule(Rule::Kind::url, "a", "p", "c");
    Rule copy = rule;
    EXPECT_EQ(copy, rule);
    copy.comment = "d";
    EXPECT_NE(copy, rule);
    EXPECT_NE(Rule(Rule::Kind::url, "a", "p", "c"), rule);
    EXPECT_EQ(Rule(Rule::Kind::url, "a", "p").comment, std::nullopt);
}

}  // namespace
}  // namespace ferrivane
