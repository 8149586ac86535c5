#import "Ferrivane/macos/RulesTableView.h"

#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsWindow.h"
#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;
namespace Measures = ferrivane::SettingsWindow::Row;

@implementation FVRulesTableView

- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (!self) return nil;
    NSTableColumn* column = [[NSTableColumn alloc] initWithIdentifier:@"rule"];
    column.resizingMask = NSTableColumnAutoresizingMask;
    column.maxWidth = CGFLOAT_MAX;
    [self addTableColumn:column];
    self.columnAutoresizingStyle = NSTableViewUniformColumnAutoresizingStyle;
    self.headerView = nil;
    self.style = NSTableViewStylePlain;
    self.intercellSpacing = NSZeroSize;
    self.rowSizeStyle = NSTableViewRowSizeStyleCustom;
    self.rowHeight = Measures::handle.height + 2 * Measures::padding.height;
    self.usesAlternatingRowBackgroundColors = YES;
    self.selectionHighlightStyle = NSTableViewSelectionHighlightStyleNone;
    self.draggingDestinationFeedbackStyle = NSTableViewDraggingDestinationFeedbackStyleNone;
    self.allowsTypeSelect = NO;
    self.refusesFirstResponder = YES;
    [self registerForDraggedTypes:@[ NSPasteboardTypeString ]];
    Views::identify(self, SettingsControls::rules);
    return self;
}

- (BOOL)validateProposedFirstResponder:(NSResponder*)responder forEvent:(NSEvent*)event {
    const bool isField =
        [responder isKindOfClass:NSTextField.class] && ((NSTextField*)responder).editable;
    if (isField || [responder isKindOfClass:NSText.class]) return YES;
    return [super validateProposedFirstResponder:responder forEvent:event];
}

- (void)draggingExited:(id<NSDraggingInfo>)sender {
    [super draggingExited:sender];
    if (self.whenDragLeaves) self.whenDragLeaves();
}

@end
