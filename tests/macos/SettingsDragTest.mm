#include <gmock/gmock.h>

#import "Ferrivane/macos/RulesListView.h"
#import "tests/macos/SettingsTest.h"

// What the system tells of a drag that is over the list.
@interface FVStandInDrag : NSObject <NSDraggingInfo>
@property NSPoint draggingLocation;
@property NSDragOperation draggingSourceOperationMask;
@end

@implementation FVStandInDrag
@synthesize draggingFormation = _draggingFormation;
@synthesize animatesToDestination = _animatesToDestination;
@synthesize numberOfValidItemsForDrop = _numberOfValidItemsForDrop;

- (NSWindow*)draggingDestinationWindow {
    return nil;
}
- (NSImage*)draggedImage {
    return nil;
}
- (NSPoint)draggedImageLocation {
    return self.draggingLocation;
}
- (NSPasteboard*)draggingPasteboard {
    return [NSPasteboard pasteboardWithUniqueName];
}
- (id)draggingSource {
    return nil;
}
- (NSInteger)draggingSequenceNumber {
    return 1;
}
- (NSSpringLoadingHighlight)springLoadingHighlight {
    return NSSpringLoadingHighlightNone;
}
- (void)slideDraggedImageTo:(NSPoint)screenPoint {
}
- (void)enumerateDraggingItemsWithOptions:(NSDraggingItemEnumerationOptions)options
                                  forView:(NSView*)view
                                  classes:(NSArray<Class>*)classes
                            searchOptions:
                                (NSDictionary<NSPasteboardReadingOptionKey, id>*)searchOptions
                               usingBlock:(void (^)(NSDraggingItem*, NSInteger, BOOL*))block {
}
- (void)resetSpringLoading {
}
@end

namespace ferrivane {
namespace {

using ::testing::ElementsAre;

class SettingsDragTest : public test::SettingsTest {
  protected:
    FVRulesListView* list() { return (FVRulesListView*)table().delegate; }
    void begin(NSUInteger index) {
        [list() tableView:table()
             draggingSession:[[NSDraggingSession alloc] init]
            willBeginAtPoint:NSZeroPoint
               forRowIndexes:[NSIndexSet indexSetWithIndex:index]];
        draw();
    }
    void end() {
        [list() tableView:table()
            draggingSession:[[NSDraggingSession alloc] init]
               endedAtPoint:NSZeroPoint
                  operation:NSDragOperationNone];
        draw();
    }
    // The pointer is over this row, or below the last one.
    NSDragOperation hover(NSInteger index, NSDragOperation offered = NSDragOperationMove) {
        const NSRect rect = [table() rectOfRow:index];
        NSPoint point = NSMakePoint(NSMidX(rect), NSMidY(rect));
        if (index >= table().numberOfRows) point = NSMakePoint(10, NSMaxY(table().bounds) + 10);
        drag.draggingLocation = [table() convertPoint:point toView:nil];
        drag.draggingSourceOperationMask = offered;
        const NSDragOperation operation = [list() tableView:table()
                                               validateDrop:drag
                                                proposedRow:0
                                      proposedDropOperation:NSTableViewDropAbove];
        draw();
        return operation;
    }
    bool drop(NSInteger index) {
        const bool accepted = [list() tableView:table()
                                     acceptDrop:drag
                                            row:index
                                  dropOperation:NSTableViewDropOn];
        draw();
        return accepted;
    }
    std::vector<std::string> matches() {
        std::vector<std::string> texts;
        for (NSInteger i = 0; i < table().numberOfRows; ++i) {
            texts.push_back(utf8(matchOf(i).stringValue));
        }
        return texts;
    }
    // Lines of the accent colour on a row: "top" or "bottom" for each.
    std::vector<std::string> lines(NSInteger index) {
        std::vector<std::string> found;
        FVRuleRowView* const view = row(index);
        for (NSView* child in view.subviews) {
            if (![child isKindOfClass:NSBox.class] || child.hidden) continue;
            EXPECT_EQ(sizeOf(child).height, 2);
            const bool isAtOrigin = child.frame.origin.y < 1;
            found.emplace_back(isAtOrigin == view.flipped ? "top" : "bottom");
        }
        return found;
    }

    FVStandInDrag* drag = [[FVStandInDrag alloc] init];
};

TEST_F(SettingsDragTest, ADragOffersTheRulesIdentifierAsPlainText) {
    NSPasteboardItem* item = (NSPasteboardItem*)[list() tableView:table() pasteboardWriterForRow:1];
    EXPECT_EQ(utf8([item stringForType:NSPasteboardTypeString]), id(1).text());
    EXPECT_TRUE([table().registeredDraggedTypes containsObject:NSPasteboardTypeString]);
}

TEST_F(SettingsDragTest, TheInsertionLineLiesWhereTheRuleWillStand) {
    EXPECT_THAT(lines(0), ElementsAre());
    begin(2);
    hover(0);
    EXPECT_THAT(lines(0), ElementsAre("top"));
    hover(1);
    EXPECT_THAT(lines(0), ElementsAre());
    EXPECT_THAT(lines(1), ElementsAre("top"));
    end();
    EXPECT_THAT(lines(1), ElementsAre());
    begin(0);
    hover(1);
    EXPECT_THAT(lines(1), ElementsAre("bottom"));
}

TEST_F(SettingsDragTest, TheLineGoesWhenTheDragLeavesTheList) {
    begin(2);
    hover(0);
    [table() draggingExited:drag];
    draw();
    EXPECT_THAT(lines(0), ElementsAre());
    hover(0);
    EXPECT_THAT(lines(0), ElementsAre("top")) << "it comes back";
}

TEST_F(SettingsDragTest, ADropOnARowMovesTheRuleThere) {
    begin(2);
    EXPECT_EQ(hover(0), NSDragOperationMove);
    EXPECT_TRUE(drop(0));
    end();
    EXPECT_THAT(matches(), ElementsAre("Mail", "a.example", "b"));
    EXPECT_EQ(saved(0).match, "Mail");
    EXPECT_THAT(lines(0), ElementsAre());
}

TEST_F(SettingsDragTest, ADropBelowTheRowsMovesTheRuleToTheEnd) {
    begin(0);
    hover(3);
    for (NSInteger i = 0; i < 3; ++i) EXPECT_THAT(lines(i), ElementsAre());
    EXPECT_TRUE(drop(-1));
    end();
    EXPECT_THAT(matches(), ElementsAre("b", "Mail", "a.example"));
}

TEST_F(SettingsDragTest, OtherTextIsTakenAndChangesNothing) {
    const std::string before = test::readText(rulesFile);
    EXPECT_EQ(hover(1, NSDragOperationCopy), NSDragOperationCopy);
    EXPECT_THAT(lines(1), ElementsAre("bottom"));
    EXPECT_TRUE(drop(1));
    EXPECT_THAT(lines(1), ElementsAre());
    EXPECT_EQ(test::readText(rulesFile), before);
}

TEST_F(SettingsDragTest, WhatOthersWriteWaitsForTheEndOfADrag) {
    begin(0);
    writeRules(R"({"rules": []})");
    view->rulesFileChanged();
    draw();
    EXPECT_EQ(table().numberOfRows, 3);
    end();
    EXPECT_NE(find(SettingsControls::noRules), nil);
}

}  // namespace
}  // namespace ferrivane
