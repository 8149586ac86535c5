// The matcher against a reference that works everything out anew for each rule, on generated rules.
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/Matcher.h"
#include "core/support/Text.h"
#include "core/support/Url.h"

namespace ferrivane {
namespace {

bool referenceHost(const std::string& pattern, std::string_view link) {
    const auto url = Url::parse(link);
    if (!url || !url->host) return false;
    std::string name = Text::lowerCase(pattern);
    name.erase(0, std::min(name.find_first_not_of('.'), name.size()));
    name.erase(name.find_last_not_of('.') + 1);
    const std::string host = "." + Text::lowerCase(*url->host);
    const std::string sought = "." + name;
    if (host == sought) return true;
    return host.size() > sought.size() && host.substr(host.size() - sought.size()) == sought;
}

bool referenceMatches(const Rule& rule, std::string_view link,
                      const std::optional<Opener>& opener) {
    const std::string pattern(Text::trim(rule.match));
    if (pattern.empty()) return false;
    const std::string folded = Text::foldCase(pattern);
    const auto contains = [&](std::string_view text) {
        return Text::foldCase(text).find(folded) != std::string::npos;
    };
    switch (rule.kind) {
        case Rule::Kind::url:
            return contains(link);
        case Rule::Kind::host:
            return referenceHost(pattern, link);
        case Rule::Kind::app:
            if (!opener) return false;
            return (opener->bundleId && Text::foldCase(*opener->bundleId) == folded) ||
                   (opener->name && Text::foldCase(*opener->name) == folded) ||
                   (opener->path && contains(*opener->path));
    }
    return false;
}

class Generator {
  public:
    std::size_t below(std::size_t limit) { return engine_() % limit; }

    // A few pieces of text that have a good chance to meet again.
    std::string text(std::size_t most) {
        static const std::vector<std::string> kPieces{
            "a",      "B",  "b.c",   "C",  ".",   "x",      "é",    "e\u0301", "ß",
            "ss",     "S",  "Σ",     "ς",  "İ",   "\u212A", "k",    " ",       "\u00A0",
            "https:", "//", "/",     "@",  ":80", "\t",     "\xC3", "\xFF",    "www.",
            "?",      "#",  "[::1]", "\\", "%41", "-",      "😀",   "\u0301",  "ﬁ",
        };
        std::string text;
        for (std::size_t i = below(most + 1); i > 0; --i) text += kPieces[below(kPieces.size())];
        return text;
    }

    std::string link() {
        switch (below(4)) {
            case 0:
                return text(8);
            case 1:
                return "mailto:" + text(4);
            default:
                return "https://" + text(6) + "/" + text(3);
        }
    }

    std::optional<std::string> field() {
        return below(3) == 0 ? std::nullopt : std::optional(text(2));
    }

  private:
    std::mt19937 engine_{20240229};  // the same rules in each run
};

TEST(MatcherReference, AgreesOnGeneratedRules) {
    Generator generate;
    std::size_t won = 0;
    constexpr int kConfigurations = 3000;
    for (int round = 0; round < kConfigurations; ++round) {
        Config config;
        for (std::size_t i = generate.below(8); i > 0; --i) {
            const Rule::Kind kind = Rule::kAllKinds[generate.below(3)];
            config.rules.emplace_back(kind, generate.text(3), std::to_string(i));
        }
        const std::string link = generate.link();
        std::optional<Opener> opener;
        if (generate.below(4) != 0) {
            opener = Opener{generate.field(), generate.field(), generate.field()};
        }

        const Decision decision = Matcher::decide(link, opener, config);
        Decision expected{config.defaultProfile, std::nullopt, std::nullopt};
        for (std::size_t i = 0; i < config.rules.size(); ++i) {
            const Rule& rule = config.rules[i];
            const bool result = referenceMatches(rule, link, opener);
            ASSERT_EQ(Matcher::matches(rule, link, opener), result)
                << rawValue(rule.kind) << " \"" << rule.match << "\" on \"" << link << "\"";
            if (result && !expected.rule) {
                expected = {rule.profile, static_cast<std::ptrdiff_t>(i), rule};
            }
        }
        ASSERT_EQ(decision, expected) << link;
        if (!decision.isDefault()) ++won;
    }
    // The comparison says something only when rules do match, and do not.
    EXPECT_GT(won, kConfigurations / 20U);
    EXPECT_LT(won, kConfigurations * 9U / 10U);
}

TEST(MatcherReference, CaseOfAsciiLettersNeverMatters) {
    Generator generate;
    const auto changed = [&](std::string text) {
        for (char& c : text) {
            const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
            if (isLetter && generate.below(2) == 0) c = static_cast<char>(c ^ 0x20);
        }
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string link = generate.link();
        const Opener opener{generate.field(), generate.field(), generate.field()};
        const Rule rule(Rule::kAllKinds[generate.below(3)], generate.text(2), "p");
        Rule other = rule;
        other.match = changed(rule.match);
        const bool result = Matcher::matches(rule, link, opener);
        EXPECT_EQ(Matcher::matches(other, link, opener), result) << rule.match << " on " << link;
        EXPECT_EQ(Matcher::matches(rule, changed(link), opener), result)
            << rule.match << " on " << link;
    }
}

}  // namespace
}  // namespace ferrivane
