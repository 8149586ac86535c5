#import "Ferrivane/macos/RulesListView.h"

#include <algorithm>
#include <optional>

#include "Ferrivane/SettingsWindow.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/RuleContextMenu.h"
#import "Ferrivane/macos/RuleRowView.h"
#import "Ferrivane/macos/RulesTableView.h"
#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;

static NSUserInterfaceItemIdentifier const kRow = @"rule";
// The outline's corners stay free of what is inside.
static constexpr CGFloat kInset = 2;

@implementation FVRulesListView {
    SettingsView* _view;
    FVRulesTableView* _table;
    FVRuleContextMenu* _menu;
    std::optional<std::size_t> _rowsShown;
    std::optional<Uuid> _dropTarget;
}

- (instancetype)initWithView:(SettingsView&)view {
    self = [super initWithFrame:Views::kSomeFrame];
    if (!self) return nil;
    _view = &view;
    self.boxType = NSBoxCustom;
    self.titlePosition = NSNoTitle;
    self.borderWidth = 1;
    self.cornerRadius = SettingsWindow::listRadius;
    self.borderColor = NSColor.separatorColor;
    self.fillColor = NSColor.controlBackgroundColor;
    self.contentViewMargins = NSZeroSize;

    _table = [[FVRulesTableView alloc] initWithFrame:NSZeroRect];
    _table.dataSource = self;
    _table.delegate = self;
    __weak FVRulesListView* weakSelf = self;
    _table.whenDragLeaves = ^{
      [weakSelf setDropTarget:std::nullopt];
    };
    _menu = [[FVRuleContextMenu alloc] initWithView:view];
    _menu.delegate = self;
    _table.menu = _menu;

    NSScrollView* scroll = [[NSScrollView alloc] init];
    scroll.documentView = _table;
    scroll.hasVerticalScroller = YES;
    scroll.borderType = NSNoBorder;
    scroll.drawsBackground = NO;
    scroll.contentView.postsFrameChangedNotifications = YES;
    [NSNotificationCenter.defaultCenter addObserver:self
                                           selector:@selector(widthChanged:)
                                               name:NSViewFrameDidChangeNotification
                                             object:scroll.contentView];
    Views::fill(self.contentView, scroll, kInset);
    [self.heightAnchor constraintGreaterThanOrEqualToConstant:SettingsWindow::listHeight].active =
        YES;
    return self;
}

- (NSTableView*)table {
    return _table;
}

- (void)widthChanged:(NSNotification*)notification {
    [_table sizeLastColumnToFit];
}

- (const std::vector<Rule>&)rules {
    return _view->store().config().rules;
}

- (std::optional<Uuid>)ruleAt:(NSInteger)row {
    if (row < 0 || row >= std::ssize(self.rules)) return std::nullopt;
    return self.rules.at(std::size_t(row)).id;
}

- (void)render {
    const std::optional<Uuid> focused = _view->focusedRule();
    // The end of an edit may bring other rules.
    [self forEachRow:^(FVRuleRowView* row, NSInteger index) {
      const bool stays = [self isShown] && [row showsRule:[self ruleAt:index]];
      if (!stays) [row endEditing];
    }];
    if ([self isShown]) {
        [self forEachRow:^(FVRuleRowView* row, NSInteger index) {
          if ([self ruleAt:index]) [row showRuleAt:std::size_t(index)];
        }];
    } else {
        _rowsShown = self.rules.size();
        [_table reloadData];
    }
    [self linkKeyViews];
    const auto found = std::ranges::find(self.rules, focused, &Rule::id);
    if (found != self.rules.end()) [self beginEditingRow:found - self.rules.begin()];
}

// As many rules as the table has rows.
- (BOOL)isShown {
    return _rowsShown == self.rules.size();
}

- (void)beginEditingRow:(NSInteger)index {
    FVRuleRowView* row = [_table viewAtColumn:0 row:index makeIfNecessary:NO];
    if (row.isEditing) return;
    [self.window layoutIfNeeded];
    [_table scrollRowToVisible:index];
    row = [_table viewAtColumn:0 row:index makeIfNecessary:YES];
    [row beginEditing];
}

// Those that exist; a row that comes into view is asked for.
- (void)forEachRow:(void (^)(FVRuleRowView* row, NSInteger index))work {
    [_table enumerateAvailableRowViewsUsingBlock:^(NSTableRowView* rowView, NSInteger index) {
      FVRuleRowView* row = rowView.numberOfColumns > 0 ? [rowView viewAtColumn:0] : nil;
      if (row) work(row, index);
    }];
}

- (void)tellFocus {
    [self forEachRow:^(FVRuleRowView* row, NSInteger index) {
      if (row.isEditing) [row tellFocus];
    }];
}

// Those just out of view too: the Tab key scrolls to them.
- (void)linkKeyViews {
    NSView* last = _table;
    const NSRange visible = [_table rowsInRect:_table.visibleRect];
    const NSInteger begin = std::max<NSInteger>(NSInteger(visible.location) - 1, 0);
    const NSInteger end =
        std::min<NSInteger>(NSInteger(NSMaxRange(visible)) + 1, _table.numberOfRows);
    for (NSInteger index = begin; index < end; ++index) {
        FVRuleRowView* row = [_table viewAtColumn:0 row:index makeIfNecessary:NO];
        for (NSView* view in row.keyViews) {
            last.nextKeyView = view;
            last = view;
        }
    }
    last.nextKeyView = self.following;
}

- (NSInteger)numberOfRowsInTableView:(NSTableView*)tableView {
    return std::ssize(self.rules);
}

- (NSView*)tableView:(NSTableView*)tableView
    viewForTableColumn:(NSTableColumn*)tableColumn
                   row:(NSInteger)index {
    // The table may not know yet that there are fewer.
    if (![self ruleAt:index]) return nil;
    FVRuleRowView* row = [tableView makeViewWithIdentifier:kRow owner:nil];
    if (!row) {
        row = [[FVRuleRowView alloc] initWithView:*_view];
        row.identifier = kRow;
    }
    [row showRuleAt:std::size_t(index)];
    return row;
}

- (void)tableView:(NSTableView*)tableView
    didAddRowView:(NSTableRowView*)rowView
           forRow:(NSInteger)row {
    [self linkKeyViews];
}

- (BOOL)tableView:(NSTableView*)tableView shouldSelectRow:(NSInteger)row {
    return NO;
}

// Dragging.

- (id<NSPasteboardWriting>)tableView:(NSTableView*)tableView pasteboardWriterForRow:(NSInteger)row {
    const auto rule = [self ruleAt:row];
    if (!rule) return nil;
    NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
    [item setString:nsString(rule->text()) forType:NSPasteboardTypeString];
    return item;
}

- (void)tableView:(NSTableView*)tableView
     draggingSession:(NSDraggingSession*)session
    willBeginAtPoint:(NSPoint)screenPoint
       forRowIndexes:(NSIndexSet*)rowIndexes {
    if (const auto rule = [self ruleAt:NSInteger(rowIndexes.firstIndex)]) _view->beginDrag(*rule);
}

- (void)tableView:(NSTableView*)tableView
    draggingSession:(NSDraggingSession*)session
       endedAtPoint:(NSPoint)screenPoint
          operation:(NSDragOperation)operation {
    [self setDropTarget:std::nullopt];
    _view->endDrag();
}

- (NSDragOperation)tableView:(NSTableView*)tableView
                validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row
       proposedDropOperation:(NSTableViewDropOperation)dropOperation {
    const NSPoint point = [tableView convertPoint:info.draggingLocation fromView:nil];
    const NSInteger target = [tableView rowAtPoint:point];
    [tableView setDropRow:target dropOperation:NSTableViewDropOn];
    [self setDropTarget:[self ruleAt:target]];
    const bool moves = (info.draggingSourceOperationMask & NSDragOperationMove) != 0;
    return moves ? NSDragOperationMove : NSDragOperationCopy;
}

- (BOOL)tableView:(NSTableView*)tableView
       acceptDrop:(id<NSDraggingInfo>)info
              row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)dropOperation {
    _view->drop([self ruleAt:row]);
    [self setDropTarget:std::nullopt];
    return YES;
}

- (void)setDropTarget:(std::optional<Uuid>)target {
    if (target == _dropTarget) return;
    if (_dropTarget) _view->setDropTargeted(*_dropTarget, false);
    if (target) _view->setDropTargeted(*target, true);
    _dropTarget = target;
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
    [_menu fillForRow:_table.clickedRow];
}

@end
