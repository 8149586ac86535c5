#include <gtest/gtest.h>

#include "core/Config.h"
#include "tests/support/Outcome.h"

namespace ferrivane {
namespace {

using test::outcomeOf;

TEST(ConfigEncode, DefaultsAreTheStarterFile) {
    EXPECT_EQ(*Config().encode(), R"({
  "defaultProfile": "Default",
  "logFullURLs": false,
  "rules": []
}
)");
}

TEST(ConfigEncode, KeysAreSortedAndSlashesStayAsTheyAre) {
    Config config{.defaultProfile = "Work", .rules = {}, .logFullURLs = true};
    config.rules.emplace_back(Rule::Kind::url, "a.b/c", "Profile 1", "why");
    config.rules.emplace_back(Rule::Kind::host, "", "");
    config.rules.emplace_back(Rule::Kind::app, "é\"\\\n", "me@a.b", "");
    EXPECT_EQ(*config.encode(), R"({
  "defaultProfile": "Work",
  "logFullURLs": true,
  "rules": [
    {
      "comment": "why",
      "kind": "url",
      "match": "a.b/c",
      "profile": "Profile 1"
    },
    {
      "kind": "host",
      "match": "",
      "profile": ""
    },
    {
      "comment": "",
      "kind": "app",
      "match": "é\"\\\n",
      "profile": "me@a.b"
    }
  ]
}
)");
}

TEST(ConfigEncode, ReadingBackGivesTheSameButForIds) {
    Config config{.defaultProfile = "", .rules = {}, .logFullURLs = true};
    for (int i = 0; i < 50; ++i) {
        const Rule::Kind kind = Rule::kAllKinds[static_cast<std::size_t>(i) % 3];
        const std::string number = std::to_string(i);
        std::optional<std::string> comment;
        if (i % 2 == 0) comment = "comment /" + number + std::string(1, '\0') + "\x7F😀";
        config.rules.emplace_back(kind, " match " + number, "profile\t" + number, comment);
    }
    const std::string text = *config.encode();
    EXPECT_EQ(text.find("\"id\""), std::string::npos);
    Config back = *Config::decode(text);
    EXPECT_NE(back, config);
    ASSERT_EQ(back.rules.size(), config.rules.size());
    for (std::size_t i = 0; i < back.rules.size(); ++i) {
        EXPECT_NE(back.rules[i].id, config.rules[i].id);
        back.rules[i].id = config.rules[i].id;
    }
    EXPECT_EQ(back, config);
    EXPECT_EQ(*back.encode(), text);
}

TEST(ConfigEncode, ATextThatIsNotUtf8IsAnError) {
    const char* const bad = "a\xFFz";
    const Config inProfile{.defaultProfile = bad, .rules = {}};
    Config inMatch;
    inMatch.rules.emplace_back(Rule::Kind::url, bad, "p");
    Config inComment;
    inComment.rules.emplace_back(Rule::Kind::url, "m", "p", bad);
    for (const Config& config : {inProfile, inMatch, inComment}) {
        EXPECT_EQ(outcomeOf(config.encode()), "a text of the configuration is not UTF-8");
    }
}

}  // namespace
}  // namespace ferrivane
