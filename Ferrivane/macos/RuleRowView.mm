#import "Ferrivane/macos/RuleRowView.h"

#include <utility>
#include <vector>

#include "Ferrivane/RuleRow.h"
#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsWindow.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/ProfilePickerView.h"
#import "Ferrivane/macos/RuleContextMenu.h"
#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;
namespace Measures = ferrivane::SettingsWindow::Row;

// Tells when it takes the focus; its delegate hears only of the first key.
@interface FVMatchField : NSTextField
@property(weak) FVRuleRowView* row;
@end

@implementation FVMatchField

- (BOOL)becomeFirstResponder {
    const BOOL becomes = [super becomeFirstResponder];
    if (becomes) [self.row tellFocus];
    return becomes;
}

@end

@interface FVRuleRowView () <NSTextFieldDelegate>
@end

@implementation FVRuleRowView {
    SettingsView* _view;
    std::optional<Uuid> _rule;
    std::vector<RunningApp> _apps;
    NSImageView* _handle;
    NSPopUpButton* _kind;
    FVMatchField* _match;
    NSPopUpButton* _fillIn;
    FVProfilePickerView* _profile;
    NSButton* _remove;
    NSBox* _lineAbove;
    NSBox* _lineBelow;
}

- (instancetype)initWithView:(SettingsView&)view {
    self = [super initWithFrame:NSZeroRect];
    if (!self) return nil;
    _view = &view;
    [self makeControls];
    NSStackView* row = Views::row(@[
        _handle, _kind, _match, _fillIn, Views::symbol("arrow.right", NSColor.secondaryLabelColor),
        _profile, _remove
    ]);
    row.translatesAutoresizingMaskIntoConstraints = NO;
    [self addSubview:row];
    const CGFloat padding = Measures::padding.width;
    NSLayoutConstraint* trailing = [row.trailingAnchor constraintEqualToAnchor:self.trailingAnchor
                                                                      constant:-padding];
    // A column that has no width yet is too narrow.
    trailing.priority = NSLayoutPriorityRequired - 1;
    [NSLayoutConstraint activateConstraints:@[
        trailing,
        [row.leadingAnchor constraintEqualToAnchor:self.leadingAnchor constant:padding],
        [row.centerYAnchor constraintEqualToAnchor:self.centerYAnchor],
    ]];
    _lineAbove = [self addLine];
    [_lineAbove.topAnchor constraintEqualToAnchor:self.topAnchor].active = YES;
    _lineBelow = [self addLine];
    [_lineBelow.bottomAnchor constraintEqualToAnchor:self.bottomAnchor].active = YES;
    // What is seen of the rule while it is dragged.
    self.imageView = _handle;
    self.textField = _match;
    return self;
}

- (void)makeControls {
    _handle = Views::symbol("line.3.horizontal", NSColor.secondaryLabelColor);
    _handle.accessibilityElement = YES;
    _handle.toolTip = nsString(RuleRow::handleToolTip);
    Views::fixWidth(_handle, Measures::handle.width);
    [_handle.heightAnchor constraintEqualToConstant:Measures::handle.height].active = YES;

    _kind = [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO];
    std::vector<std::string> kinds;
    for (const auto& kind : RuleRow::kinds) kinds.emplace_back(kind.label);
    Views::setTitles(_kind, kinds);
    Views::setUp(_kind, Measures::kindWidth, self, @selector(chooseKind:));

    _match = (FVMatchField*)Views::field(FVMatchField.class);
    _match.row = self;
    _match.delegate = self;

    _fillIn = [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:YES];
    _fillIn.bordered = NO;
    _fillIn.imagePosition = NSImageOnly;
    _fillIn.toolTip = nsString(RuleRow::fillInToolTip);
    _fillIn.target = self;
    _fillIn.action = @selector(fillIn:);
    [self fillMenu];

    _profile = [[FVProfilePickerView alloc] initWithFrame:NSZeroRect pullsDown:NO];
    Views::setUp(_profile, Measures::profileWidth, self, @selector(chooseProfile:));

    _remove = Views::borderless("minus.circle", RuleRow::removeToolTip, self, @selector(remove:));
}

- (NSBox*)addLine {
    NSBox* line = [[NSBox alloc] initWithFrame:Views::kSomeFrame];
    line.boxType = NSBoxCustom;
    line.titlePosition = NSNoTitle;
    line.borderWidth = 0;
    line.contentViewMargins = NSZeroSize;
    line.fillColor = NSColor.controlAccentColor;
    line.hidden = YES;
    line.translatesAutoresizingMaskIntoConstraints = NO;
    [self addSubview:line];
    [NSLayoutConstraint activateConstraints:@[
        [line.leadingAnchor constraintEqualToAnchor:self.leadingAnchor],
        [line.trailingAnchor constraintEqualToAnchor:self.trailingAnchor],
        [line.heightAnchor constraintEqualToConstant:SettingsWindow::insertionLineHeight],
    ]];
    return line;
}

- (void)showRuleAt:(std::size_t)index {
    const Rule& rule = _view->store().config().rules.at(index);
    _rule = rule.id;

    const std::pair<NSView*, const Control&> named[] = {
        {self, SettingsControls::rule},      {_handle, SettingsControls::handle},
        {_kind, SettingsControls::kind},     {_match, SettingsControls::match},
        {_fillIn, SettingsControls::fillIn}, {_profile, SettingsControls::profile},
        {_remove, SettingsControls::remove}};
    for (const auto& [view, control] : named) Views::identifyInRow(view, control, index);

    for (std::size_t i = 0; i < RuleRow::kinds.size(); ++i) {
        if (RuleRow::kinds[i].kind == rule.kind) [_kind selectItemAtIndex:NSInteger(i)];
    }
    Views::setText(_match, rule.match);
    _match.placeholderString = nsString(_view->matchPlaceholder(rule.kind));
    _fillIn.hidden = !RuleRow::hasFillInMenu(rule.kind);
    if (_apps != _view->runningApps()) {
        _apps = _view->runningApps();
        [self fillMenu];
    }
    _fillIn.enabled = _view->canFillIn();
    [_profile showChoices:_view->profileChoices(rule.profile)];

    const auto edge = _view->insertionEdge(rule.id);
    _lineAbove.hidden = edge != SettingsView::Edge::top;
    _lineBelow.hidden = edge != SettingsView::Edge::bottom;
}

// The first item of a menu that pulls down is what the button shows.
- (void)fillMenu {
    std::vector<std::string> titles{""};
    for (const RunningApp& app : _apps) titles.push_back(app.name);
    Views::setTitles(_fillIn, titles);
    [_fillIn itemAtIndex:0].image = [NSImage imageWithSystemSymbolName:@"app.badge.checkmark"
                                              accessibilityDescription:nil];
}

- (BOOL)isEditing {
    return _match.currentEditor != nil;
}

- (void)beginEditing {
    if (!self.isEditing) [self.window makeFirstResponder:_match];
}

- (void)endEditing {
    if (self.isEditing) [self.window makeFirstResponder:nil];
}

- (BOOL)showsRule:(const std::optional<Uuid>&)rule {
    return _rule == rule;
}

- (void)tellFocus {
    _view->setFocusedRule(_rule);
}

- (NSArray<NSView*>*)keyViews {
    return @[ _kind, _match, _fillIn, _profile, _remove ];
}

- (void)controlTextDidChange:(NSNotification*)notification {
    // The Return key ends an edit and leaves the insertion point.
    [self tellFocus];
    _view->setMatch(*_rule, utf8(_match.stringValue));
}

- (void)controlTextDidEndEditing:(NSNotification*)notification {
    // Another rule may have the focus already.
    if (_view->focusedRule() == _rule) _view->setFocusedRule(std::nullopt);
}

- (void)chooseKind:(id)sender {
    _view->setKind(*_rule, RuleRow::kinds.at(std::size_t(_kind.indexOfSelectedItem)).kind);
}

- (void)fillIn:(id)sender {
    _view->setMatch(*_rule, _apps.at(std::size_t(_fillIn.indexOfSelectedItem - 1)).matchValue);
}

- (void)chooseProfile:(id)sender {
    _view->setProfile(*_rule, [_profile chosenValue]);
}

- (void)remove:(id)sender {
    _view->removeRule(Uuid(*_rule));
}

- (BOOL)holdsFocus {
    NSResponder* focused = self.window.firstResponder;
    return [focused isKindOfClass:NSView.class] && [(NSView*)focused isDescendantOf:self];
}

- (BOOL)performKeyEquivalent:(NSEvent*)event {
    const NSEventModifierFlags others = NSEventModifierFlagControl | NSEventModifierFlagShift;
    const bool isUp = [event.charactersIgnoringModifiers isEqualToString:FVMoveUpKey];
    const bool isDown = [event.charactersIgnoringModifiers isEqualToString:FVMoveDownKey];
    const bool isMove =
        (isUp || isDown) && (event.modifierFlags & (FVMoveModifiers | others)) == FVMoveModifiers;
    if (!isMove || !self.holdsFocus) return [super performKeyEquivalent:event];
    const Uuid rule = *_rule;
    _view->move(rule, isUp ? -1 : 1);
    _view->setFocusedRule(rule);
    return YES;
}

@end
