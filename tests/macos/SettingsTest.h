// What the tests of the settings window have in common: a real window over the portable view, three
// rules in a file of the test's own, and a desktop in memory.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#import <Cocoa/Cocoa.h>
#include <gtest/gtest.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsView.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/RuleRowView.h"
#import "Ferrivane/macos/SettingsWindow.h"
#include "tests/app/HelperTest.h"

namespace ferrivane::test {

class SettingsTest : public HelperTest {
  protected:
    SettingsTest();
    // Nothing that still has to be drawn outlives the view.
    ~SettingsTest() override;

    // Shown when it is first asked for.
    NSWindow* window();
    // The first view of this control that is not hidden, in the whole window or below a view. Nil
    // without one.
    NSView* find(const Control& control, NSView* below = nil);
    NSString* textOf(const Control& control) { return ((NSTextField*)find(control)).stringValue; }
    // As it is laid out: without shadows and the like.
    static NSSize sizeOf(NSView* view) { return [view alignmentRectForFrame:view.frame].size; }
    NSTableView* table() { return (NSTableView*)find(SettingsControls::rules); }
    FVRuleRowView* row(NSInteger index);
    NSTextField* matchOf(NSInteger index);

    // Once everything that is due on the main thread is done.
    void draw();
    // Whether it becomes true soon; the main thread is free meanwhile.
    bool becomesTrue(const std::function<bool()>& condition, NSTimeInterval within = 10);
    // Chooses what stands at this place, as the person does.
    void choose(NSView* popUp, NSInteger index);
    // Types into the field that has the focus.
    void type(std::string_view text);
    // Reads the file as everybody else does.
    Rule saved(std::size_t index) const { return Config::load(rulesFile)->rules.at(index); }
    Uuid id(std::size_t index) const { return store->config().rules.at(index).id; }
    void useRules(std::size_t count);

    MenuBar menuBar{fake.userInterface, log, [] {}};
    std::optional<RulesStore> store;
    std::optional<SettingsView> view;
    FVSettingsWindowController* controller = nil;
};

}  // namespace ferrivane::test
