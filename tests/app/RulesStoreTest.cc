#include <set>

#include <gmock/gmock.h>

#include "Ferrivane/RulesStore.h"
#include "tests/app/HelperTest.h"

namespace ferrivane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kTwoRules =
    R"({"rules": [{"kind": "host", "match": "a", "profile": "Work"},
                  {"kind": "url", "match": "b", "profile": "Home"}]})";

class RulesStoreTest : public test::HelperTest {
  protected:
    RulesStoreTest() {
        fake.isSandboxed = false;
        writeCatalogue({{"Default", "Home", {}, {}}, {"Profile 1", "Work", {}, {}}});
        fakeStore();
    }

    void fakeStore() { made.emplace(fake.platform(), log, rulesFile); }
    RulesStore& store() { return *made; }
    std::filesystem::path kept() const { return rulesFile.string() + ".bak"; }
    // As what the file says now is read by everybody else.
    Config onDisk() const { return Config::load(rulesFile).value(); }
    std::vector<std::string> matches() {
        std::vector<std::string> texts;
        for (const Rule& rule : store().config().rules) texts.push_back(rule.match);
        return texts;
    }
    // In place of the rules' folder there is a file, which no save gets past.
    void breakDisk() {
        std::filesystem::create_directories(rulesFile.parent_path());
        std::filesystem::rename(rulesFile.parent_path(), dir / "aside");
        test::writeText(rulesFile.parent_path(), "");
    }
    void mendDisk() {
        std::filesystem::remove(rulesFile.parent_path());
        std::filesystem::rename(dir / "aside", rulesFile.parent_path());
    }

    const std::filesystem::path rulesFile = dir / "config/rules.json";
    std::optional<RulesStore> made;
};

TEST_F(RulesStoreTest, NothingIsReadBeforeReload) {
    EXPECT_EQ(store().config(), Config());
    EXPECT_THAT(store().profiles(), IsEmpty());
    EXPECT_EQ(store().problem(), std::nullopt);
    EXPECT_EQ(store().helper(), HelperScript::State::notNeeded);
    EXPECT_FALSE(std::filesystem::exists(rulesFile));
    EXPECT_TRUE(fake.calls.empty());
}

TEST_F(RulesStoreTest, ReloadMakesTheStarterFileAndReadsProfiles) {
    store().reload();
    EXPECT_TRUE(std::filesystem::exists(rulesFile));
    EXPECT_EQ(store().config().defaultProfile, "Default");
    EXPECT_THAT(store().profiles(), SizeIs(2));
    EXPECT_EQ(store().problem(), std::nullopt);
}

TEST_F(RulesStoreTest, ReloadWritesNothing) {
    std::filesystem::create_directories(rulesFile.parent_path());
    const std::string asTyped = std::string(kTwoRules) + "   \n";
    test::writeText(rulesFile, asTyped);
    store().reload();
    store().reload();
    EXPECT_THAT(matches(), ElementsAre("a", "b"));
    EXPECT_EQ(test::readText(rulesFile), asTyped);
    EXPECT_FALSE(std::filesystem::exists(kept()));
}

TEST_F(RulesStoreTest, RulesThatCannotBeReadLeaveThoseThatAreShown) {
    std::filesystem::create_directories(rulesFile.parent_path());
    test::writeText(rulesFile, kTwoRules);
    store().reload();
    test::writeText(rulesFile, "{ broken");
    store().reload();
    EXPECT_THAT(matches(), ElementsAre("a", "b"));
    EXPECT_THAT(store().problem(), Optional(StartsWith("rules.json: ")));
    EXPECT_EQ(*store().problem(),
              "rules.json: " + Config::decode("{ broken").error().description());
    EXPECT_EQ(test::readText(rulesFile), "{ broken");
    EXPECT_THAT(store().profiles(), SizeIs(2)) << "the profiles are read all the same";
}

TEST_F(RulesStoreTest, AStarterFileThatCannotBeMadeIsAProblem) {
    breakDisk();
    store().reload();
    EXPECT_THAT(store().problem(), Optional(StartsWith("rules.json: ")));
    EXPECT_EQ(store().config(), Config());
}

TEST_F(RulesStoreTest, EachEditIsOneSave) {
    store().reload();
    const Uuid rule = store().addRule();
    for (const char* typed : {"a", "ab", "abc"}) {
        Config config = store().config();
        config.rules[0].match = typed;
        store().setConfig(config);
        EXPECT_EQ(onDisk().rules[0].match, typed) << "in the same call";
    }
    store().removeRule(rule);
    EXPECT_THAT(onDisk().rules, IsEmpty());
}

TEST_F(RulesStoreTest, ANewRuleStandsAtTheEndWithTheDefaultProfile) {
    store().reload();
    Config config = store().config();
    config.defaultProfile = "Work";
    store().setConfig(config);
    const Uuid first = store().addRule();
    const Uuid second = store().addRule();
    ASSERT_THAT(store().config().rules, SizeIs(2));
    const Rule& rule = store().config().rules[1];
    EXPECT_EQ(rule.id, second);
    EXPECT_NE(first, second);
    EXPECT_EQ(rule.kind, Rule::Kind::url);
    EXPECT_EQ(rule.match, "");
    EXPECT_EQ(rule.profile, "Work");
    EXPECT_EQ(rule.comment, std::nullopt);
    EXPECT_EQ(onDisk().rules[1].profile, "Work");
}

TEST_F(RulesStoreTest, RemovingARuleThatIsGoneSavesAllTheSame) {
    store().reload();
    std::filesystem::remove(rulesFile);
    store().removeRule(Uuid::random());
    EXPECT_TRUE(std::filesystem::exists(rulesFile));
}

TEST_F(RulesStoreTest, AFailedSaveKeepsTheEditAndTheNextOneTriesAgain) {
    store().reload();
    breakDisk();
    store().addRule();
    EXPECT_THAT(store().problem(), Optional(StartsWith("cannot save rules.json: ")));
    EXPECT_THAT(store().config().rules, SizeIs(1));
    mendDisk();
    store().addRule();
    EXPECT_EQ(store().problem(), std::nullopt);
    EXPECT_THAT(onDisk().rules, SizeIs(2));
}

TEST_F(RulesStoreTest, ASuccessfulSaveClearsAnyProblem) {
    std::filesystem::remove(userData / "Local State");
    store().reload();
    EXPECT_THAT(store().problem(), Optional(StartsWith("Chrome profiles: ")));
    EXPECT_THAT(store().profiles(), IsEmpty());
    store().addRule();
    EXPECT_EQ(store().problem(), std::nullopt);
}

TEST_F(RulesStoreTest, ObserversAreToldBeforeEachChange) {
    store().reload();
    std::vector<std::string> seen;
    const auto subscription = store().willChange.add([&] {
        seen.push_back(std::to_string(store().config().rules.size()) + " rules, " +
                       (store().problem() ? "a problem" : "no problem"));
    });
    store().addRule();
    EXPECT_THAT(seen, ElementsAre("0 rules, no problem", "1 rules, no problem"))
        << "once for the rules, once for the problem that a save clears";
    seen.clear();
    breakDisk();
    store().addRule();
    EXPECT_THAT(seen, ElementsAre("1 rules, no problem", "2 rules, no problem"));
    mendDisk();
}

TEST_F(RulesStoreTest, AnObserverThatIsGoneIsNotTold) {
    int count = 0;
    auto subscription = store().willChange.add([&] { ++count; });
    store().addRule();
    const int before = count;
    EXPECT_GT(before, 0);
    subscription.reset();
    store().addRule();
    EXPECT_EQ(count, before);
}

TEST_F(RulesStoreTest, TheTesterDecidesByWhatIsShown) {
    writeCatalogue({{"Profile 1", "Work", {}, {}}});
    store().reload();
    Config config;
    config.defaultProfile = "Nobody";
    config.rules.emplace_back(Rule::Kind::app, "Mail", "Work");
    store().setConfig(config);
    test::writeText(rulesFile, "{ broken");
    const auto [decision, profile] =
        store().decide("https://a/", Opener{"Mail", std::nullopt, std::nullopt});
    EXPECT_EQ(decision.ruleIndex, 0);
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->directory, "Profile 1");
    EXPECT_EQ(store().decide("https://a/", std::nullopt).second, std::nullopt);
    EXPECT_EQ(test::readText(rulesFile), "{ broken");
}

// Somebody else writes to the file.

TEST_F(RulesStoreTest, WhatOthersWroteIsKeptBeforeASaveOverIt) {
    const struct {
        const char* name;
        const char* text;
    } rows[] = {
        {"rules that were not shown", R"({"defaultProfile": "Work"})"},
        {"a text that cannot be read", "{ broken"},
        {"nothing", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        store().reload();
        newLogLines();
        test::writeText(rulesFile, row.text);
        store().addRule();
        store().addRule();
        EXPECT_EQ(test::readText(kept()), row.text) << "our own text is not kept over it";
        EXPECT_EQ(test::modeOf(kept()), 0600U);
        EXPECT_THAT(newLogLines(), ElementsAre("[WARN] rules.json was changed elsewhere; what it "
                                               "said is kept in " +
                                               kept().string()));
        EXPECT_EQ(store().problem(), std::nullopt);
    }
}

TEST_F(RulesStoreTest, ATextThatReloadCouldNotReadIsKept) {
    std::filesystem::create_directories(rulesFile.parent_path());
    test::writeText(rulesFile, "{ broken");
    store().reload();
    store().addRule();
    EXPECT_EQ(test::readText(kept()), "{ broken");
    EXPECT_THAT(onDisk().rules, SizeIs(1));
}

TEST_F(RulesStoreTest, WhatLiesThereAndIsNoReadableFileIsMovedAside) {
    store().reload();
    std::filesystem::remove(rulesFile);
    std::filesystem::create_directory(rulesFile);
    store().addRule();
    EXPECT_TRUE(std::filesystem::is_directory(kept()));
    EXPECT_THAT(onDisk().rules, SizeIs(1));
}

TEST_F(RulesStoreTest, EveryTextOfOthersIsKept) {
    store().reload();
    for (const char* text : {"FIRST", "SECOND", "THIRD"}) {
        test::writeText(rulesFile, text);
        store().addRule();
    }
    EXPECT_EQ(test::readText(kept()), "THIRD");
    EXPECT_EQ(test::readText(kept().string() + ".1"), "FIRST");
    EXPECT_EQ(test::readText(kept().string() + ".2"), "SECOND");
}

TEST_F(RulesStoreTest, ALinkStaysWhenWhatItLeadsToCannotBeRead) {
    store().reload();
    std::filesystem::remove(rulesFile);
    std::filesystem::create_directory(dir / "elsewhere");
    std::filesystem::create_symlink(dir / "elsewhere", rulesFile);
    store().addRule();
    EXPECT_TRUE(std::filesystem::is_symlink(rulesFile));
    EXPECT_TRUE(std::filesystem::is_directory(kept()));
    EXPECT_THAT(onDisk().rules, SizeIs(1));
}

TEST_F(RulesStoreTest, RulesThatReadTheSameAreTheSame) {
    store().reload();
    test::writeText(rulesFile, kTwoRules);
    store().reload();
    const Uuid a = store().config().rules[0].id;
    const Uuid b = store().config().rules[1].id;
    store().reload();
    EXPECT_EQ(store().config().rules[0].id, a);
    Config more = store().config();
    more.rules.insert(more.rules.begin(), Rule(Rule::Kind::url, "new", ""));
    ASSERT_TRUE(more.save(rulesFile));
    store().reload();
    EXPECT_THAT(matches(), ElementsAre("new", "a", "b"));
    EXPECT_EQ(store().config().rules[1].id, a);
    EXPECT_EQ(store().config().rules[2].id, b);
    Config twice = store().config();
    twice.rules = {twice.rules[1], twice.rules[1], twice.rules[1]};
    ASSERT_TRUE(twice.save(rulesFile));
    store().reload();
    std::set<std::string> identifiers;
    for (const Rule& rule : store().config().rules) identifiers.insert(rule.id.text());
    EXPECT_EQ(identifiers.size(), 3U) << "no two rules are one";
}

TEST_F(RulesStoreTest, OurOwnTextAndAMissingFileAreNotKept) {
    store().reload();
    store().addRule();
    store().addRule();
    std::filesystem::remove(rulesFile);
    store().addRule();
    EXPECT_FALSE(std::filesystem::exists(kept()));
}

TEST_F(RulesStoreTest, AChangeOnTheDiskIsReadAgain) {
    store().reload();
    store().addRule();
    const Uuid before = store().config().rules[0].id;
    store().reloadIfChanged();
    EXPECT_EQ(store().config().rules[0].id, before) << "nothing has changed";
    test::writeText(rulesFile, kTwoRules);
    store().reloadIfChanged();
    EXPECT_THAT(matches(), ElementsAre("a", "b"));
    std::filesystem::remove(rulesFile);
    store().reloadIfChanged();
    EXPECT_THAT(matches(), ElementsAre("a", "b")) << "an editor is replacing it";
}

TEST_F(RulesStoreTest, AnEditThatCouldNotBeSavedDoesNotGiveWayUnasked) {
    store().reload();
    breakDisk();
    store().addRule();
    mendDisk();
    test::writeText(rulesFile, kTwoRules);
    store().reloadIfChanged();
    EXPECT_THAT(matches(), ElementsAre("")) << "it is nowhere but here";
    store().addRule();
    EXPECT_THAT(onDisk().rules, SizeIs(2));
    EXPECT_EQ(test::readText(kept()), kTwoRules);
    test::writeText(rulesFile, kTwoRules);
    store().reloadIfChanged();
    EXPECT_THAT(matches(), ElementsAre("a", "b")) << "it has been saved since";
}

TEST_F(RulesStoreTest, TheLogTellsOfEditsThatWereNeverSaved) {
    store().reload();
    breakDisk();
    store().addRule();
    mendDisk();
    store().reload();
    EXPECT_THAT(matches(), IsEmpty());
    EXPECT_THAT(newLogLines(),
                Contains("[WARN] edits that could not be saved gave way to rules.json as it is"));
}

// In a sandbox.

class SandboxedRulesStore : public RulesStoreTest {
  protected:
    SandboxedRulesStore() {
        fake.isSandboxed = true;
        fakeStore();
    }
};

TEST_F(SandboxedRulesStore, WithoutItsScriptThereAreNoProfilesAndNoProblem) {
    store().reload();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(store().helper(), HelperScript::State::missing);
    EXPECT_THAT(store().profiles(), IsEmpty());
    EXPECT_EQ(store().problem(), std::nullopt);
    installScript("#!/bin/sh\n# of an older version\n");
    fake.scripts.ran = std::unexpected(PlatformError{"refused"});
    store().reload();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(store().helper(), HelperScript::State::outdated);
    EXPECT_EQ(store().problem(), std::nullopt);
}

TEST_F(SandboxedRulesStore, ProfilesComeLaterThroughTheScript) {
    installScript();
    copyByScript(test::readText(userData / "Local State"));
    store().reload();
    EXPECT_EQ(store().helper(), HelperScript::State::ready);
    EXPECT_THAT(store().profiles(), IsEmpty());
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(store().profiles(), SizeIs(2));
    copyByScript("no catalogue");
    store().reload();
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(store().profiles(), IsEmpty());
    EXPECT_THAT(store().problem(), Optional(StartsWith("Chrome profiles: ")));
}

TEST_F(SandboxedRulesStore, ProfilesThatComeTooLateAreDropped) {
    installScript();
    store().reload();
    made.reset();
    fake.mainLoop.runUntilIdle();
}

TEST_F(SandboxedRulesStore, InstallingTheScriptEndsInAReload) {
    fake.savePanel.answer = {.response = 1, .file = installed};
    copyByScript(test::readText(userData / "Local State"));
    store().installHelper();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(store().helper(), HelperScript::State::ready);
    EXPECT_EQ(store().problem(), std::nullopt);
    EXPECT_THAT(newLogLines().front(), "[INFO] Install Helper pressed");
}

TEST_F(SandboxedRulesStore, ACancelledInstallationIsNoProblem) {
    fake.savePanel.answer = {.response = 0, .file = {}};
    store().installHelper();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(store().helper(), HelperScript::State::missing);
    EXPECT_EQ(store().problem(), std::nullopt);
    EXPECT_THAT(newLogLines().back(), "[INFO] helper install cancelled");
}

TEST_F(SandboxedRulesStore, AFailedInstallationStaysVisibleInTheLogOnly) {
    std::filesystem::remove(bundled);
    fake.scripts.bundled.reset();
    std::vector<std::string> problems;
    const auto subscription =
        store().willChange.add([&] { problems.push_back(store().problem().value_or("none")); });
    store().installHelper();
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(problems, ::testing::Contains("this build has no bundled helper script"));
    EXPECT_EQ(store().problem(), std::nullopt);
    EXPECT_THAT(newLogLines(),
                ElementsAre("[INFO] Install Helper pressed",
                            "[ERROR] helper install failed: this build has no bundled helper "
                            "script"));
}

}  // namespace
}  // namespace ferrivane
