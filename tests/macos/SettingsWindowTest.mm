#include "Ferrivane/SettingsWindow.h"
#import "tests/macos/SettingsTest.h"

namespace ferrivane {
namespace {

class SettingsWindowTest : public test::SettingsTest {
  protected:
    NSEvent* mouse(NSEventType type, NSPoint point) {
        return [NSEvent mouseEventWithType:type
                                  location:point
                             modifierFlags:0
                                 timestamp:NSProcessInfo.processInfo.systemUptime
                              windowNumber:window().windowNumber
                                   context:nil
                               eventNumber:0
                                clickCount:1
                                  pressure:1];
    }
    // Whoever tracks the pointer from the press on finds the release.
    void click(NSPoint point) {
        [NSApp postEvent:mouse(NSEventTypeLeftMouseUp, point) atStart:NO];
        [window() sendEvent:mouse(NSEventTypeLeftMouseDown, point)];
    }
    NSPoint middleOf(NSView* inside) {
        const NSRect bounds = inside.bounds;
        return [inside convertPoint:NSMakePoint(NSMidX(bounds), NSMidY(bounds)) toView:nil];
    }
    bool isEdited(NSTextField* field) { return field.currentEditor != nil; }
};

// Between the content and the window's edge.
constexpr NSPoint kEmptySpace = {SettingsWindow::padding / 2.0, 300};

TEST_F(SettingsWindowTest, HasItsNameAndSize) {
    NSWindow* const made = window();
    EXPECT_EQ(utf8(made.title), "Ferrivane");
    EXPECT_EQ(made.minSize.width, 700);
    EXPECT_EQ(made.minSize.height, 520);
    EXPECT_EQ(utf8(made.frameAutosaveName), "Settings");
    EXPECT_FALSE(made.releasedWhenClosed);
    const NSWindowStyleMask style = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                    NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;
    EXPECT_EQ(made.styleMask & style, style);
    const NSSize content = [made contentRectForFrameRect:made.frame].size;
    EXPECT_EQ(content.width, 820);
    EXPECT_EQ(content.height, 620);
}

TEST_F(SettingsWindowTest, TheApplicationIsInTheDockAsLongAsTheWindowIsOpen) {
    EXPECT_TRUE(window().visible);
    EXPECT_EQ(NSApp.activationPolicy, NSApplicationActivationPolicyRegular);
    [window() close];
    EXPECT_FALSE(window().visible);
    EXPECT_EQ(NSApp.activationPolicy, NSApplicationActivationPolicyAccessory);
    [controller show];
    EXPECT_TRUE(window().visible);
    EXPECT_EQ(NSApp.activationPolicy, NSApplicationActivationPolicyRegular);
}

TEST_F(SettingsWindowTest, AsksAgainEachTimeItAppears) {
    window();
    fake.applications.applicationsRunning.clear();
    [controller show];
    EXPECT_EQ(view->runningApps().size(), 2U) << "it was there already";
    [window() close];
    [controller show];
    EXPECT_TRUE(view->runningApps().empty());
}

TEST_F(SettingsWindowTest, NoRuleIsEditedBeforeThePersonMeansTo) {
    window();
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    for (NSInteger i = 0; i < 3; ++i) EXPECT_FALSE(isEdited(matchOf(i)));
}

TEST_F(SettingsWindowTest, AClickOnEmptySpaceCommitsTheText) {
    NSTextField* const field = matchOf(0);
    [window() makeFirstResponder:field];
    type("c.example");
    click(kEmptySpace);
    EXPECT_FALSE(isEdited(field));
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    EXPECT_EQ(utf8(field.stringValue), "c.example");
    EXPECT_EQ(saved(0).match, "c.example");
}

TEST_F(SettingsWindowTest, AClickIntoTheTextDoesNot) {
    NSTextField* const field = matchOf(0);
    [window() makeFirstResponder:field];
    NSText* const editor = field.currentEditor;
    click(middleOf(editor));
    EXPECT_EQ(field.currentEditor, editor);
    EXPECT_EQ(view->focusedRule(), id(0));
}

TEST_F(SettingsWindowTest, OtherEventsAndOtherFocusAreLeftAlone) {
    NSTextField* const field = matchOf(0);
    [window() makeFirstResponder:field];
    [window() sendEvent:mouse(NSEventTypeLeftMouseUp, kEmptySpace)];
    EXPECT_TRUE(isEdited(field));
    [window() makeFirstResponder:nil];
    click(kEmptySpace);
    EXPECT_EQ(window().firstResponder, window());
}

TEST_F(SettingsWindowTest, ClosingCommitsAndStopsWatching) {
    [window() makeFirstResponder:matchOf(0)];
    type("c.example");
    [window() close];
    EXPECT_EQ(view->focusedRule(), std::nullopt);
    EXPECT_EQ(saved(0).match, "c.example");
    writeRules(R"({"rules": []})");
    EXPECT_FALSE(becomesTrue([&] { return store->config().rules.empty(); }, 0.2));
}

}  // namespace
}  // namespace ferrivane
