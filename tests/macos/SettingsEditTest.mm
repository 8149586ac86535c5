#include <gmock/gmock.h>

#import "Ferrivane/macos/RuleContextMenu.h"
#import "tests/macos/SettingsTest.h"

namespace ferrivane {
namespace {

namespace Controls = SettingsControls;
using ::testing::ElementsAre;

class SettingsEditTest : public test::SettingsTest {
  protected:
    std::vector<std::string> savedMatches() const {
        std::vector<std::string> texts;
        for (const Rule& rule : Config::load(rulesFile)->rules) texts.push_back(rule.match);
        return texts;
    }
    void click(const Control& control, NSView* below = nil) {
        [(NSButton*)find(control, below) performClick:nil];
        draw();
    }
    void edit(NSInteger index) {
        [window() makeFirstResponder:matchOf(index)];
        draw();
    }
    void endEditing() {
        [window() makeFirstResponder:nil];
        draw();
    }
    // With Option and Command; false when nothing takes it.
    bool press(NSString* arrow) {
        const auto flags = NSEventModifierFlagOption | NSEventModifierFlagCommand |
                           NSEventModifierFlagFunction | NSEventModifierFlagNumericPad;
        NSEvent* event = [NSEvent keyEventWithType:NSEventTypeKeyDown
                                          location:NSZeroPoint
                                     modifierFlags:flags
                                         timestamp:0
                                      windowNumber:window().windowNumber
                                           context:nil
                                        characters:arrow
                       charactersIgnoringModifiers:arrow
                                         isARepeat:NO
                                           keyCode:0];
        const bool taken = [window() performKeyEquivalent:event];
        draw();
        return taken;
    }
    NSMenu* contextMenu(NSInteger index) {
        [(FVRuleContextMenu*)table().menu fillForRow:index];
        return table().menu;
    }
};

TEST_F(SettingsEditTest, TheKindIsSavedAndChangesWhatTheRowOffers) {
    choose(find(Controls::kind, row(2)), 1);
    EXPECT_EQ(saved(2).kind, Rule::Kind::host);
    EXPECT_EQ(saved(2).match, "Mail");
    EXPECT_EQ(find(Controls::fillIn, row(2)), nil);
    EXPECT_EQ(utf8(matchOf(2).placeholderString), view->matchPlaceholder(Rule::Kind::host));
}

TEST_F(SettingsEditTest, AProfileIsSavedByItsFolder) {
    choose(find(Controls::profile, row(0)), 0);
    EXPECT_EQ(saved(0).profile, "Default");
    choose(find(Controls::profile, row(2)), 2);
    EXPECT_EQ(saved(2).profile, "Gone") << "no profile of Chrome's, and kept as it is";
}

TEST_F(SettingsEditTest, ARunningApplicationFillsThePatternIn) {
    choose(find(Controls::fillIn, row(2)), 1);
    EXPECT_EQ(saved(2).match, "org.example.chat");
    EXPECT_EQ(utf8(matchOf(2).stringValue), "org.example.chat");
}

TEST_F(SettingsEditTest, EachKeyIsSaved) {
    edit(0);
    type("c");
    EXPECT_EQ(saved(0).match, "c") << "the whole text was selected";
    type("d");
    EXPECT_EQ(saved(0).match, "cd");
}

TEST_F(SettingsEditTest, TheRuleThatIsEditedHasTheFocusFromTheStart) {
    edit(1);
    EXPECT_EQ(view->focusedRule(), id(1));
    edit(0);
    EXPECT_EQ(view->focusedRule(), id(0));
    endEditing();
    EXPECT_EQ(view->focusedRule(), std::nullopt);
}

TEST_F(SettingsEditTest, AnEditGoesOnBehindTheReturnKey) {
    edit(0);
    type("c");
    [(NSTextView*)window().firstResponder insertNewline:nil];
    if (matchOf(0).currentEditor == nil) edit(0);
    type("d");
    EXPECT_EQ(view->focusedRule(), id(0));
    EXPECT_EQ(saved(0).match, "d") << "the whole text was selected";
}

TEST_F(SettingsEditTest, DrawingLeavesTheInsertionPointWhereItIs) {
    edit(0);
    NSText* const editor = matchOf(0).currentEditor;
    editor.selectedRange = NSMakeRange(3, 2);
    view->setDefaultProfile("Profile 1");
    type("X");
    draw();
    EXPECT_EQ(matchOf(0).currentEditor, editor);
    EXPECT_EQ(editor.selectedRange.location, 4U);
    EXPECT_EQ(saved(0).match, "a.eXmple");
}

TEST_F(SettingsEditTest, WhatIsTypedIsNotCorrected) {
    edit(0);
    NSTextView* const editor = (NSTextView*)matchOf(0).currentEditor;
    EXPECT_FALSE(editor.automaticQuoteSubstitutionEnabled);
    EXPECT_FALSE(editor.automaticDashSubstitutionEnabled);
    EXPECT_FALSE(editor.automaticTextReplacementEnabled);
    EXPECT_FALSE(editor.automaticSpellingCorrectionEnabled);
}

TEST_F(SettingsEditTest, ANewRuleIsShownAndEditedAtOnce) {
    useRules(100);
    click(Controls::addRule);
    ASSERT_EQ(table().numberOfRows, 101);
    EXPECT_EQ(view->focusedRule(), id(100));
    EXPECT_NE(matchOf(100).currentEditor, nil);
    EXPECT_TRUE(NSIntersectsRect(table().visibleRect, [table() rectOfRow:100]));
    type("new.example");
    EXPECT_EQ(saved(100).match, "new.example");
}

TEST_F(SettingsEditTest, TheFirstRuleOfAll) {
    useRules(0);
    click(Controls::addRule);
    EXPECT_NE(matchOf(0).currentEditor, nil);
    EXPECT_EQ(find(Controls::noRules), nil);
}

TEST_F(SettingsEditTest, ARuleIsRemoved) {
    click(Controls::remove, row(1));
    EXPECT_EQ(table().numberOfRows, 2);
    EXPECT_THAT(savedMatches(), ElementsAre("a.example", "Mail"));
    EXPECT_EQ(utf8(matchOf(1).stringValue), "Mail");
}

TEST_F(SettingsEditTest, RemovingTheRuleThatIsEditedEndsTheEdit) {
    edit(2);
    view->removeRule(id(2));
    draw();
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    EXPECT_THAT(savedMatches(), ElementsAre("a.example", "b"));
}

TEST_F(SettingsEditTest, TheContextMenuIsThatOfTheRule) {
    NSMenu* menu = contextMenu(0);
    ASSERT_EQ(menu.numberOfItems, 4);
    EXPECT_EQ(utf8([menu itemAtIndex:0].title), "Move Up");
    EXPECT_TRUE([[menu itemAtIndex:0].keyEquivalent isEqualToString:FVMoveUpKey]);
    EXPECT_FALSE([menu itemAtIndex:0].enabled);
    EXPECT_TRUE([menu itemAtIndex:1].enabled);
    EXPECT_TRUE([menu itemAtIndex:2].separatorItem);
    EXPECT_EQ(utf8([menu itemAtIndex:3].title), "Remove");
    EXPECT_FALSE([contextMenu(2) itemAtIndex:1].enabled);
    EXPECT_EQ(contextMenu(-1).numberOfItems, 0) << "beside the rows";
}

TEST_F(SettingsEditTest, TheContextMenuMovesAndRemoves) {
    [contextMenu(0) performActionForItemAtIndex:1];
    draw();
    EXPECT_THAT(savedMatches(), ElementsAre("b", "a.example", "Mail"));
    [contextMenu(2) performActionForItemAtIndex:0];
    [contextMenu(0) performActionForItemAtIndex:3];
    draw();
    EXPECT_THAT(savedMatches(), ElementsAre("Mail", "a.example"));
    EXPECT_EQ(utf8(matchOf(0).stringValue), "Mail");
}

TEST_F(SettingsEditTest, ArrowsMoveTheRuleThatHasTheFocusAndItKeepsIt) {
    edit(0);
    EXPECT_TRUE(press(FVMoveDownKey));
    EXPECT_THAT(savedMatches(), ElementsAre("b", "a.example", "Mail"));
    EXPECT_NE(matchOf(1).currentEditor, nil);
    EXPECT_EQ(view->focusedRule(), id(1));
    EXPECT_TRUE(press(FVMoveUpKey));
    EXPECT_THAT(savedMatches(), ElementsAre("a.example", "b", "Mail"));
    EXPECT_NE(matchOf(0).currentEditor, nil);
    endEditing();
    EXPECT_FALSE(press(FVMoveDownKey)) << "no rule has the focus";
}

TEST_F(SettingsEditTest, TheTabKeyGoesThroughTheRow) {
    NSView* const kind = find(Controls::kind, row(0));
    EXPECT_EQ(table().nextKeyView, kind);
    EXPECT_EQ(kind.nextKeyView, matchOf(0));
    EXPECT_EQ(find(Controls::remove, row(0)).nextKeyView, find(Controls::kind, row(1)));
    EXPECT_EQ(find(Controls::remove, row(2)).nextKeyView, find(Controls::addRule));
    EXPECT_EQ(find(Controls::addRule).nextKeyView, find(Controls::defaultProfile));
}

TEST_F(SettingsEditTest, WhatOthersWriteWaitsForTheEndOfAnEdit) {
    edit(0);
    writeRules(R"({"rules": []})");
    view->rulesFileChanged();
    draw();
    EXPECT_EQ(table().numberOfRows, 3);
    endEditing();
    EXPECT_NE(find(Controls::noRules), nil);
}

TEST_F(SettingsEditTest, NothingIsEditedWhileAnotherWindowHasTheFocus) {
    edit(0);
    [controller windowDidResignKey:[NSNotification notificationWithName:@"test" object:nil]];
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    draw();
    EXPECT_NE(matchOf(0).currentEditor, nil) << "the insertion point stays";
    [controller windowDidBecomeKey:[NSNotification notificationWithName:@"test" object:nil]];
    EXPECT_EQ(view->focusedRule(), id(0));
}

}  // namespace
}  // namespace ferrivane
