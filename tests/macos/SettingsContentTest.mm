#import "tests/macos/SettingsTest.h"

namespace ferrivane {
namespace {

namespace Controls = SettingsControls;
using SettingsContentTest = test::SettingsTest;

std::string text(NSString* string) {
    return utf8(string);
}

TEST_F(SettingsContentTest, EveryControlHasItsIdentifier) {
    for (const Control& control : Controls::all) {
        if (control.identifier == Controls::window.identifier) {
            EXPECT_EQ(text(window().accessibilityIdentifier), control.identifier);
        } else if (control.identifier == Controls::noRules.identifier ||
                   control.identifier == Controls::problem.identifier ||
                   control.identifier.starts_with("helper.")) {
            EXPECT_EQ(find(control), nil) << control.identifier << " has nothing to say";
        } else {
            EXPECT_NE(find(control), nil) << control.identifier;
        }
    }
}

TEST_F(SettingsContentTest, ControlsAreReadOutByTheirNames) {
    EXPECT_EQ(text(find(Controls::testURL).accessibilityLabel), "Link to try");
    EXPECT_EQ(text(find(Controls::rules).accessibilityLabel), "Rules");
    for (const Control& control : {Controls::handle, Controls::kind, Controls::match,
                                   Controls::fillIn, Controls::profile, Controls::remove}) {
        EXPECT_EQ(text(find(control, row(2)).accessibilityLabel), Controls::nameInRow(control, 2));
    }
}

TEST_F(SettingsContentTest, TheBannerAboutTheDefaultBrowser) {
    NSButton* make = (NSButton*)find(Controls::makeDefault);
    EXPECT_EQ(text(textOf(Controls::defaultBrowserText)), view->defaultBrowserBanner().text);
    EXPECT_EQ(text(make.title), "Make Ferrivane the default");
    [make performClick:nil];
    fake.mainLoop.runUntilIdle();
    draw();
    EXPECT_EQ(find(Controls::makeDefault), nil) << "it is the default one now";
    EXPECT_EQ(text(textOf(Controls::defaultBrowserText)),
              "Ferrivane is your default browser. Links from other apps go through your rules.");
}

TEST_F(SettingsContentTest, TheBannerAboutTheHelperIsThereWhileItIsNeeded) {
    fake.isSandboxed = true;
    store.emplace(fake.platform(), log, rulesFile);
    view.emplace(fake.platform(), *store, menuBar);
    store->reload();
    EXPECT_EQ(text(textOf(Controls::helperText)), view->helperBanner()->text);
    EXPECT_EQ(text(((NSButton*)find(Controls::installHelper)).title), "Install Helper…");
    EXPECT_EQ(text(((NSButton*)find(Controls::showFolders)).title), "Show Folders…");
    fake.calls.clear();
    [(NSButton*)find(Controls::showFolders) performClick:nil];
    EXPECT_GT(fake.calls.count("scripts."), 0U);
    installScript();
    store->reload();
    draw();
    EXPECT_EQ(find(Controls::helperText), nil);
}

TEST_F(SettingsContentTest, ARowShowsItsRule) {
    ASSERT_EQ(table().numberOfRows, 3);
    const auto titleOf = [&](const Control& control, NSInteger index) {
        return text(((NSPopUpButton*)find(control, row(index))).titleOfSelectedItem);
    };
    EXPECT_EQ(titleOf(Controls::kind, 0), "Domain");
    EXPECT_EQ(titleOf(Controls::kind, 1), "URL contains");
    EXPECT_EQ(titleOf(Controls::kind, 2), "Sent by");
    EXPECT_EQ(text(matchOf(0).stringValue), "a.example");
    EXPECT_EQ(text(matchOf(0).placeholderString), view->matchPlaceholder(Rule::Kind::host));
    EXPECT_EQ(titleOf(Controls::profile, 0), "Work");
    EXPECT_EQ(titleOf(Controls::profile, 1), "Home");
    EXPECT_EQ(titleOf(Controls::profile, 2), "⚠︎ Gone");
    EXPECT_EQ(find(Controls::fillIn, row(0)), nil) << "only for senders";
}

TEST_F(SettingsContentTest, TheMenuThatFillsInListsTheRunningApplications) {
    NSArray<NSString*>* titles = ((NSPopUpButton*)find(Controls::fillIn, row(2))).itemTitles;
    EXPECT_TRUE(([titles isEqualToArray:@[ @"", @"Chat", @"Mail" ]]));
}

TEST_F(SettingsContentTest, WithoutRulesATextStandsInTheirPlace) {
    useRules(0);
    EXPECT_EQ(text(textOf(Controls::noRules)), SettingsView::noRules);
    EXPECT_EQ(find(Controls::rules), nil);
    choose(find(Controls::defaultProfile), 1);
    EXPECT_EQ(Config::load(rulesFile)->defaultProfile, "Profile 1");
    useRules(1);
    draw();
    EXPECT_EQ(find(Controls::noRules), nil);
    EXPECT_EQ(table().numberOfRows, 1);
}

TEST_F(SettingsContentTest, TheMeasures) {
    EXPECT_GE(table().enclosingScrollView.superview.superview.frame.size.height, 160);
    EXPECT_EQ(table().rowHeight, 34);
    EXPECT_EQ(sizeOf(find(Controls::kind, row(0))).width, 118);
    EXPECT_EQ(sizeOf(find(Controls::profile, row(0))).width, 150);
    EXPECT_EQ(sizeOf(find(Controls::defaultProfile)).width, 170);
    EXPECT_EQ(sizeOf(find(Controls::testApp)).width, 190);
    EXPECT_NEAR(table().tableColumns.firstObject.width,
                table().enclosingScrollView.contentView.bounds.size.width, 2);
}

TEST_F(SettingsContentTest, OnlyRowsThatAreSeenAreMade) {
    useRules(1000);
    EXPECT_EQ(table().numberOfRows, 1000);
    __block int count = 0;
    [table() enumerateAvailableRowViewsUsingBlock:^(NSTableRowView*, NSInteger) {
      ++count;
    }];
    EXPECT_LT(count, 200);
}

TEST_F(SettingsContentTest, TheTesterSaysWhereALinkWouldOpen) {
    EXPECT_EQ(text(textOf(Controls::testResult)), "Type a link to see where it would open.");
    [window() makeFirstResponder:find(Controls::testURL)];
    type("https://www.a.example/");
    draw();
    EXPECT_EQ(text(textOf(Controls::testResult)), "→ Work [Profile 1]   (rule #1)");
    EXPECT_TRUE(((NSTextField*)find(Controls::testResult)).selectable);
}

TEST_F(SettingsContentTest, TheTestersSenderIsARunningApplication) {
    NSPopUpButton* app = (NSPopUpButton*)find(Controls::testApp);
    EXPECT_TRUE(([app.itemTitles isEqualToArray:@[ @"unknown app", @"Chat", @"Mail" ]]));
    choose(app, 2);
    EXPECT_EQ(view->testAppPid(), 7);
    EXPECT_EQ(app.indexOfSelectedItem, 2);
    choose(app, 0);
    EXPECT_EQ(view->testAppPid(), std::nullopt);
}

TEST_F(SettingsContentTest, Options) {
    NSButton* icon = (NSButton*)find(Controls::menuBarIcon);
    EXPECT_EQ(icon.state, NSControlStateValueOff);
    [icon performClick:nil];
    EXPECT_TRUE(view->showMenuBarIcon());
    EXPECT_TRUE(fake.userInterface.statusItem);
    EXPECT_EQ(text(textOf(Controls::version)), view->version());
    fake.calls.clear();
    [(NSButton*)find(Controls::editRules) performClick:nil];
    [(NSButton*)find(Controls::showLog) performClick:nil];
    EXPECT_EQ(fake.calls.count("userInterface.openDocument"), 2U);
}

TEST_F(SettingsContentTest, AProblemIsToldAsLongAsThereIsOne) {
    writeRules("{");
    store->reload();
    EXPECT_EQ(text(textOf(Controls::problem)), *store->problem());
    writeRules("{}");
    store->reload();
    draw();
    EXPECT_EQ(find(Controls::problem), nil);
}

TEST_F(SettingsContentTest, SeveralChangesAreDrawnOnceTheMainThreadIsFree) {
    NSTextField* result = (NSTextField*)find(Controls::testResult);
    NSString* const before = result.stringValue;
    view->setTestURL("https://a");
    view->setTestURL("https://b.a.example/");
    EXPECT_TRUE([result.stringValue isEqualToString:before]);
    draw();
    EXPECT_EQ(text(result.stringValue), view->testResult());
}

}  // namespace
}  // namespace ferrivane
