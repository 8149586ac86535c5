#include <cstddef>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "core/Config.h"

namespace ferrivane {
namespace {

// Rules whose patterns are single letters.
Config configOf(std::string_view letters) {
    Config config;
    for (const char letter : letters) {
        config.rules.emplace_back(Rule::Kind::url, std::string(1, letter), "p");
    }
    return config;
}

std::string lettersOf(const Config& config) {
    std::string letters;
    for (const Rule& rule : config.rules) letters += rule.match;
    return letters;
}

TEST(ConfigMove, ByAnOffsetTwoRulesExchangePlaces) {
    constexpr std::ptrdiff_t kLargest = std::numeric_limits<std::ptrdiff_t>::max();
    constexpr std::ptrdiff_t kSmallest = std::numeric_limits<std::ptrdiff_t>::min();
    const struct {
        const char* name;
        std::size_t rule;
        std::ptrdiff_t offset;
        const char* after;
    } rows[] = {
        {"down by one", 0, 1, "BACD"},
        {"up by one", 2, -1, "ACBD"},
        {"down by two is a swap, not a shift", 0, 2, "CBAD"},
        {"up by three", 3, -3, "DBCA"},
        {"nowhere", 1, 0, "ABCD"},
        {"the first one up", 0, -1, "ABCD"},
        {"the last one down", 3, 1, "ABCD"},
        {"beyond the end", 1, 3, "ABCD"},
        {"the largest offset", 1, kLargest, "ABCD"},
        {"the smallest offset", 1, kSmallest, "ABCD"},
    };
    for (const auto& row : rows) {
        Config config = configOf("ABCD");
        const Rule moved = config.rules[row.rule];
        config.moveRule(moved.id, row.offset);
        EXPECT_EQ(lettersOf(config), row.after) << row.name;
    }
    Config config = configOf("ABCD");
    config.moveRule(Uuid::random(), 1);
    EXPECT_EQ(lettersOf(config), "ABCD");
    Config empty;
    empty.moveRule(Uuid::random(), 0);
    EXPECT_EQ(empty, Config());
}

TEST(ConfigMove, OntoAnotherRuleTakesItsPlace) {
    const struct {
        const char* name;
        std::size_t rule;
        std::size_t target;
        const char* after;
    } rows[] = {
        {"first onto third", 0, 2, "BCAD"}, {"third onto first", 2, 0, "CABD"},
        {"first onto last", 0, 3, "BCDA"},  {"last onto first", 3, 0, "DABC"},
        {"onto the next", 1, 2, "ACBD"},    {"onto the one before", 2, 1, "ACBD"},
        {"onto itself", 1, 1, "ABCD"},
    };
    for (const auto& row : rows) {
        Config config = configOf("ABCD");
        const Uuid moved = config.rules[row.rule].id;
        config.moveRule(moved, std::optional(config.rules[row.target].id));
        EXPECT_EQ(lettersOf(config), row.after) << row.name;
    }
}

TEST(ConfigMove, WithoutATargetToTheEnd) {
    for (const std::size_t rule : {0U, 1U, 3U}) {
        for (const std::optional<Uuid>& target :
             {std::optional<Uuid>(), std::optional(Uuid::random())}) {
            Config config = configOf("ABCD");
            const std::string letter = config.rules[rule].match;
            config.moveRule(config.rules[rule].id, target);
            std::string expected = "ABCD";
            expected.erase(rule, 1);
            EXPECT_EQ(lettersOf(config), expected + letter);
        }
    }
}

TEST(ConfigMove, AnUnknownRuleMovesNothing) {
    Config config = configOf("ABCD");
    config.moveRule(Uuid::random(), std::optional(config.rules[0].id));
    config.moveRule(Uuid::random(), std::optional<Uuid>());
    EXPECT_EQ(lettersOf(config), "ABCD");
    Config empty;
    empty.moveRule(Uuid::random(), std::optional<Uuid>());
    EXPECT_EQ(empty, Config());
}

TEST(ConfigMove, RulesKeepTheirIdsAndContents) {
    Config config = configOf("ABC");
    const Rule first = config.rules[0];
    config.moveRule(first.id, std::optional<Uuid>());
    EXPECT_EQ(config.rules[2], first);
}

}  // namespace
}  // namespace ferrivane
