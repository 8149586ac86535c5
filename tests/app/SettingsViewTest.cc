#include <gmock/gmock.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/SettingsView.h"
#include "tests/app/HelperTest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using Edge = SettingsView::Edge;
using Tint = SettingsView::Banner::Tint;

constexpr const char* kOwn = "/apps/com.hollowmere.ferrivane.desktop";

class SettingsViewTest : public test::HelperTest {
  protected:
    SettingsViewTest() {
        fake.isSandboxed = false;
        fake.applications.bundle = {std::string(AppInfo::bundleIdentifier), "1.2", kOwn};
        fake.applications.identifiers[kOwn] = AppInfo::bundleIdentifier;
        fake.applications.identifiers["/apps/other.desktop"] = "other";
        writeCatalogue({{"Default", "Home", {}, {}}, {"Profile 1", "Work", {}, {}}});
        writeRules(R"({"rules": [{"kind": "host", "match": "a.example", "profile": "Work"},
                                 {"kind": "url", "match": "b", "profile": "Home"},
                                 {"kind": "app", "match": "Mail", "profile": "Gone"}]})");
        store.emplace(fake.platform(), log, rulesFile);
        store->reload();
        view.emplace(fake.platform(), *store, menuBar);
    }

    Uuid id(std::size_t index) const { return store->config().rules.at(index).id; }
    std::vector<std::string> matches() const {
        std::vector<std::string> texts;
        for (const Rule& rule : store->config().rules) texts.push_back(rule.match);
        return texts;
    }
    void handleBoth(const std::string& application) {
        for (const char* scheme : {"http", "https"}) {
            fake.applications.handlers[scheme] = application;
        }
        view->refresh();
    }

    MenuBar menuBar{fake.userInterface, log, [] {}};
    std::optional<RulesStore> store;
    std::optional<SettingsView> view;
};

TEST_F(SettingsViewTest, TheDefaultBrowserIsToldInTheBanner) {
    handleBoth(kOwn);
    EXPECT_EQ(view->defaultBrowserBanner(),
              (SettingsView::Banner{
                  "checkmark.circle.fill", Tint::green,
                  "Ferrivane is your default browser. Links from other apps go through your "
                  "rules."}));
    handleBoth("/apps/other.desktop");
    EXPECT_EQ(
        view->defaultBrowserBanner(),
        (SettingsView::Banner{"exclamationmark.triangle.fill", Tint::orange,
                              "Ferrivane is not the default browser: links open straight in other.",
                              "Make Ferrivane the default"}));
    fake.applications.handlers.clear();
    view->refresh();
    EXPECT_EQ(view->defaultBrowserBanner().text,
              "Ferrivane is not the default browser: links open straight in another app.");
}

TEST_F(SettingsViewTest, TheFlagIsAskedForWhenTheViewAppearsOnly) {
    handleBoth("/apps/other.desktop");
    for (const char* scheme : {"http", "https"}) fake.applications.handlers[scheme] = kOwn;
    EXPECT_EQ(view->defaultBrowserBanner().tint, Tint::orange);
    view->refresh();
    EXPECT_EQ(view->defaultBrowserBanner().tint, Tint::green);
}

TEST_F(SettingsViewTest, BecomingTheDefaultRefreshesAtTheEnd) {
    handleBoth("/apps/other.desktop");
    view->makeDefaultBrowser();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(view->defaultBrowserBanner().tint, Tint::green);
}

TEST_F(SettingsViewTest, NoHelperBannerOutsideASandbox) {
    EXPECT_EQ(view->helperBanner(), std::nullopt);
}

TEST_F(SettingsViewTest, TheHelperBanner) {
    fake.isSandboxed = true;
    store.emplace(fake.platform(), log, rulesFile);
    view.emplace(fake.platform(), *store, menuBar);
    store->reload();
    EXPECT_EQ(*view->helperBanner(),
              (SettingsView::Banner{
                  "exclamationmark.triangle.fill", Tint::orange,
                  "One more step: Ferrivane needs a small helper script to open links in a "
                  "specific Chrome profile. Until then links open in Chrome without choosing a "
                  "profile.",
                  "Install Helper…"}));
    installScript("older");
    store->reload();
    EXPECT_EQ(view->helperBanner()->text,
              "The helper script is from an older version of Ferrivane. Install it again to keep "
              "profiles working.");
    EXPECT_EQ(view->helperBanner()->button, "Update Helper…");
    installScript();
    store->reload();
    EXPECT_EQ(view->helperBanner(), std::nullopt) << "ready";
}

TEST_F(SettingsViewTest, TheFoldersOfTheScriptAreShown) {
    fake.calls.clear();
    view->revealHelper();
    EXPECT_THAT(fake.calls.of({"scripts.select", "scripts.openFolder"}), Not(IsEmpty()));
}

TEST_F(SettingsViewTest, ItsButtonInstallsTheHelper) {
    fake.isSandboxed = true;
    store.emplace(fake.platform(), log, rulesFile);
    view.emplace(fake.platform(), *store, menuBar);
    view->installHelper();
    EXPECT_TRUE(fake.savePanel.asked);
}

TEST_F(SettingsViewTest, EachRuleIsOfferedTheProfilesThatThereAre) {
    EXPECT_EQ(view->profileChoices("Work").current, 1U);
    EXPECT_EQ(view->profileChoices("Work").all.size(), 2U);
    EXPECT_EQ(view->profileChoices("Gone").all.size(), 3U);
}

TEST_F(SettingsViewTest, OnlyTheEndsOfTheListCannotMove) {
    EXPECT_FALSE(view->canMoveUp(0));
    EXPECT_TRUE(view->canMoveDown(0));
    EXPECT_TRUE(view->canMoveUp(2));
    EXPECT_FALSE(view->canMoveDown(2));
    view->removeRule(id(0));
    view->removeRule(id(0));
    EXPECT_FALSE(view->canMoveUp(0));
    EXPECT_FALSE(view->canMoveDown(0));
}

TEST_F(SettingsViewTest, MovingByOnePlaceIsSaved) {
    view->move(id(0), 1);
    EXPECT_THAT(matches(), ElementsAre("b", "a.example", "Mail"));
    view->move(id(2), -1);
    EXPECT_THAT(matches(), ElementsAre("b", "Mail", "a.example"));
    view->move(id(0), -1);
    EXPECT_THAT(matches(), ElementsAre("b", "Mail", "a.example"));
    EXPECT_EQ(Config::load(rulesFile)->rules[1].match, "Mail");
}

TEST_F(SettingsViewTest, EditsOfARuleAreSaved) {
    const Uuid rule = id(2);
    view->setKind(rule, Rule::Kind::host);
    EXPECT_EQ(store->config().rules[2].match, "Mail") << "a change of the kind keeps the text";
    view->setMatch(rule, "c.example");
    view->setProfile(rule, "Profile 1");
    const Rule saved = Config::load(rulesFile)->rules[2];
    EXPECT_EQ(saved.kind, Rule::Kind::host);
    EXPECT_EQ(saved.match, "c.example");
    EXPECT_EQ(saved.profile, "Profile 1");
    view->setDefaultProfile("Profile 1");
    EXPECT_EQ(Config::load(rulesFile)->defaultProfile, "Profile 1");
}

TEST_F(SettingsViewTest, EditsOfARuleThatIsGoneChangeNothing) {
    const std::string before = test::readText(rulesFile);
    view->setMatch(Uuid::random(), "x");
    EXPECT_EQ(test::readText(rulesFile), before);
}

TEST_F(SettingsViewTest, ANewRuleTakesTheFocus) {
    view->addRule();
    EXPECT_EQ(view->focusedRule(), id(3));
}

TEST_F(SettingsViewTest, WhatOthersWriteIsShownAtOnce) {
    writeRules(R"({"defaultProfile": "Other"})");
    view->rulesFileChanged();
    EXPECT_EQ(store->config().defaultProfile, "Other");
}

TEST_F(SettingsViewTest, WhatOthersWriteWaitsForTheEndOfAnEdit) {
    view->setFocusedRule(id(0));
    writeRules(R"({"defaultProfile": "Other"})");
    view->rulesFileChanged();
    view->setFocusedRule(id(1));
    EXPECT_EQ(store->config().defaultProfile, "Default") << "still editing, another one";
    view->setFocusedRule(std::nullopt);
    EXPECT_EQ(store->config().defaultProfile, "Other");
}

TEST_F(SettingsViewTest, WhatOthersWroteDuringAnEditThatIsSavedIsKeptBeside) {
    view->setFocusedRule(id(0));
    writeRules(R"({"defaultProfile": "Other"})");
    view->rulesFileChanged();
    view->setMatch(id(0), "edited");
    view->setFocusedRule(std::nullopt);
    EXPECT_EQ(matches().front(), "edited");
    EXPECT_EQ(test::readText(rulesFile.string() + ".bak"), R"({"defaultProfile": "Other"})");
}

TEST_F(SettingsViewTest, WhatOthersWriteWaitsForTheEndOfADrag) {
    view->beginDrag(id(0));
    writeRules(R"({"defaultProfile": "Other"})");
    view->rulesFileChanged();
    EXPECT_EQ(store->config().defaultProfile, "Default");
    view->endDrag();
    EXPECT_EQ(store->config().defaultProfile, "Other");
}

TEST_F(SettingsViewTest, WhatOthersWriteWaitsForTheEndOfAnInteraction) {
    bool isOpen = true;
    view->isInteracting = [&] { return isOpen; };
    writeRules(R"({"defaultProfile": "Other"})");
    view->rulesFileChanged();
    view->reload();
    EXPECT_EQ(store->config().defaultProfile, "Default");
    isOpen = false;
    view->readChanges();
    EXPECT_EQ(store->config().defaultProfile, "Other");
}

TEST_F(SettingsViewTest, ADropAfterTheEndOfADragMovesNothing) {
    view->beginDrag(id(2));
    view->setDropTargeted(id(0), true);
    view->endDrag();
    EXPECT_EQ(view->insertionEdge(id(0)), std::nullopt);
    view->drop(id(0));
    EXPECT_THAT(matches(), ElementsAre("a.example", "b", "Mail"));
}

TEST_F(SettingsViewTest, ADragOffersTheRulesIdentifier) {
    EXPECT_EQ(view->beginDrag(id(1)), id(1).text());
}

TEST_F(SettingsViewTest, TheInsertionLineLiesWhereTheRuleWillStand) {
    view->setDropTargeted(id(1), true);
    EXPECT_EQ(view->insertionEdge(id(1)), Edge::bottom) << "nothing of ours is dragged";
    view->beginDrag(id(2));
    EXPECT_EQ(view->insertionEdge(id(1)), Edge::top) << "it comes from below";
    view->beginDrag(id(0));
    EXPECT_EQ(view->insertionEdge(id(1)), Edge::bottom);
    view->beginDrag(id(1));
    EXPECT_EQ(view->insertionEdge(id(1)), Edge::bottom);
    EXPECT_EQ(view->insertionEdge(id(0)), std::nullopt) << "only where the pointer is";
    const Uuid gone = id(2);
    view->beginDrag(gone);
    view->removeRule(gone);
    EXPECT_EQ(view->insertionEdge(id(1)), Edge::bottom);
}

TEST_F(SettingsViewTest, ALateLeaveDoesNotClearTheNewTarget) {
    view->setDropTargeted(id(0), true);
    view->setDropTargeted(id(1), true);
    view->setDropTargeted(id(0), false);
    EXPECT_NE(view->insertionEdge(id(1)), std::nullopt);
    view->setDropTargeted(id(1), false);
    EXPECT_EQ(view->insertionEdge(id(1)), std::nullopt);
}

TEST_F(SettingsViewTest, ADropMovesTheRuleOnto) {
    view->beginDrag(id(2));
    view->setDropTargeted(id(0), true);
    view->drop(id(0));
    EXPECT_THAT(matches(), ElementsAre("Mail", "a.example", "b"));
    EXPECT_EQ(view->insertionEdge(id(0)), std::nullopt) << "cleared";
    view->beginDrag(id(0));
    view->drop(std::nullopt);
    EXPECT_THAT(matches(), ElementsAre("a.example", "b", "Mail")) << "the list's end";
    EXPECT_EQ(Config::load(rulesFile)->rules[2].match, "Mail");
}

TEST_F(SettingsViewTest, ADropOfSomethingElseChangesNothing) {
    const std::string before = test::readText(rulesFile);
    view->drop(id(0));
    view->drop(std::nullopt);
    EXPECT_EQ(test::readText(rulesFile), before);
}

TEST_F(SettingsViewTest, TheTesterWithoutALink) {
    for (const char* text : {"", "   ", "\n\t "}) {
        view->setTestURL(text);
        EXPECT_EQ(view->testResult(), "Type a link to see where it would open.");
    }
}

TEST_F(SettingsViewTest, TheTesterSaysWhereAndWhy) {
    view->setTestURL("  https://www.a.example/ ");
    EXPECT_EQ(view->testResult(), "→ Work [Profile 1]   (rule #1)");
    view->setTestURL("https://c/b");
    EXPECT_EQ(view->testResult(), "→ Home [Default]   (rule #2)");
    view->setTestURL("https://nothing/");
    EXPECT_EQ(view->testResult(), "→ Home [Default]   (no rule matched, default)");
    view->setDefaultProfile("Nowhere");
    EXPECT_EQ(view->testResult(),
              "→ \"Nowhere\" is not a Chrome profile; Chrome would pick the window itself   (no "
              "rule matched, default)");
}

TEST_F(SettingsViewTest, TheTestersSenderIsARunningApplication) {
    fake.applications.applicationsRunning = {{7, "Mail", "org.example.Mail", "/usr/bin/mail"}};
    view->refresh();
    view->setTestURL("https://x/");
    EXPECT_EQ(view->testResult(), "→ Home [Default]   (no rule matched, default)");
    view->setTestAppPid(7);
    EXPECT_EQ(
        view->testResult(),
        "→ \"Gone\" is not a Chrome profile; Chrome would pick the window itself   (rule #3)");
    view->setTestAppPid(8);
    EXPECT_EQ(view->testResult(), "→ Home [Default]   (no rule matched, default)")
        << "it has ended";
}

TEST_F(SettingsViewTest, TheTestersSendersAreThoseThatRunAndSomebodyUnknown) {
    using Sender = SettingsView::Sender;
    fake.applications.applicationsRunning = {{7, "Mail", "org.example.Mail", "/usr/bin/mail"},
                                             {8, "Chat", "org.example.Chat", "/usr/bin/chat"}};
    view->refresh();
    EXPECT_THAT(view->senders().all,
                ElementsAre(Sender{"unknown app"}, Sender{"Chat", 8}, Sender{"Mail", 7}));
    EXPECT_EQ(view->senders().current, 0U);
    view->setTestAppPid(7);
    EXPECT_EQ(view->senders().current, 2U);
    view->setTestAppPid(9);
    EXPECT_EQ(view->senders().current, 0U) << "it runs no more";
}

TEST_F(SettingsViewTest, TheIconIsStoredAndShownAtOnceAndAfterTheNextLogin) {
    EXPECT_FALSE(view->showMenuBarIcon());
    fake.calls.clear();
    view->setShowMenuBarIcon(true);
    EXPECT_TRUE(view->showMenuBarIcon());
    EXPECT_THAT(fake.calls.of({"preferences.", "userInterface."}),
                ElementsAre("preferences.setFlag showMenuBarIcon true",
                            "userInterface.showStatusItem", "userInterface.setStartsAtLogin yes"));
    fake.calls.clear();
    view->setShowMenuBarIcon(false);
    EXPECT_THAT(fake.calls.of({"preferences.", "userInterface."}),
                ElementsAre("preferences.setFlag showMenuBarIcon false",
                            "userInterface.removeStatusItem", "userInterface.setStartsAtLogin no"));
    EXPECT_EQ(fake.userInterface.statusItem, std::nullopt);
    fake.preferences.flags["showMenuBarIcon"] = true;
    EXPECT_TRUE(SettingsView(fake.platform(), *store, menuBar).showMenuBarIcon());
}

TEST_F(SettingsViewTest, Options) {
    fake.calls.clear();
    view->editRules();
    view->showLog();
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("userInterface.openDocument " + Config::fileURL().string(),
                            "userInterface.openDocument " + log.fileURL.string()));
    EXPECT_EQ(view->version(), "Ferrivane 1.2");
}

TEST_F(SettingsViewTest, ObserversAreToldOfTheViewsOwnState) {
    int count = 0;
    const auto subscription = view->willChange.add([&] { ++count; });
    view->setTestURL("x");
    EXPECT_EQ(count, 1);
    view->setTestAppPid(7);
    view->refresh();
    view->beginDrag(id(0));
    view->setDropTargeted(id(0), true);
    view->setShowMenuBarIcon(true);
    EXPECT_EQ(count, 6);
}

}  // namespace
}  // namespace ferrivane
