#import "Ferrivane/macos/ViewParts.h"

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane::Views {
namespace {

constexpr CGFloat kSpacing = 8;
// Wider than any screen.
constexpr CGFloat kWide = 10000;
// Being wide wins over hugging what stretches, and loses against the size of the window.
constexpr NSLayoutPriority kWidePriority = 300;
constexpr NSLayoutPriority kStretchPriority = 100;

void hug(NSStackView* stack) {
    [stack setHuggingPriority:NSLayoutPriorityDefaultHigh
               forOrientation:NSLayoutConstraintOrientationVertical];
}

void prefer(NSLayoutConstraint* constraint, NSLayoutPriority priority) {
    constraint.priority = priority;
    constraint.active = YES;
}

}  // namespace

void identify(NSView* view, const Control& control) {
    view.accessibilityIdentifier = nsString(control.identifier);
    if (!control.name.empty()) view.accessibilityLabel = nsString(control.name);
}

void identifyInRow(NSView* view, const Control& control, std::size_t index) {
    view.accessibilityIdentifier = nsString(control.identifier);
    view.accessibilityLabel = nsString(SettingsControls::nameInRow(control, index));
}

NSImageView* symbol(std::string_view name, NSColor* tint) {
    NSImageView* view = [[NSImageView alloc] init];
    view.image = [NSImage imageWithSystemSymbolName:nsString(name) accessibilityDescription:nil];
    view.contentTintColor = tint;
    view.accessibilityElement = NO;
    [view setContentHuggingPriority:NSLayoutPriorityRequired
                     forOrientation:NSLayoutConstraintOrientationHorizontal];
    return view;
}

NSTextField* label(std::string_view text) {
    NSTextField* label = [NSTextField labelWithString:nsString(text)];
    [label setContentHuggingPriority:NSLayoutPriorityDefaultHigh
                      forOrientation:NSLayoutConstraintOrientationHorizontal];
    [label setContentHuggingPriority:NSLayoutPriorityDefaultHigh
                      forOrientation:NSLayoutConstraintOrientationVertical];
    return label;
}

NSTextField* secondaryLabel(std::string_view text) {
    NSTextField* small = label(text);
    small.font = [NSFont systemFontOfSize:NSFont.smallSystemFontSize];
    small.textColor = NSColor.secondaryLabelColor;
    return small;
}

NSTextField* wrappingLabel() {
    NSTextField* label = [NSTextField wrappingLabelWithString:@""];
    label.selectable = NO;
    stretch(label);
    [label setContentHuggingPriority:NSLayoutPriorityDefaultHigh
                      forOrientation:NSLayoutConstraintOrientationVertical];
    return label;
}

NSTextField* field(Class type) {
    NSTextField* field = [type textFieldWithString:@""];
    field.bezelStyle = NSTextFieldRoundedBezel;
    stretch(field);
    return field;
}

void setText(NSTextField* field, std::string_view text) {
    if (utf8(field.stringValue) != text) field.stringValue = nsString(text);
}

NSButton* button(const Control& control, std::string_view title, id target, SEL action) {
    NSButton* button = [NSButton buttonWithTitle:nsString(title) target:target action:action];
    identify(button, control);
    return button;
}

NSButton* borderless(std::string_view symbol, std::string_view toolTip, id target, SEL action) {
    NSImage* image = [NSImage imageWithSystemSymbolName:nsString(symbol)
                               accessibilityDescription:nsString(toolTip)];
    NSButton* button = [NSButton buttonWithImage:image ? image : [[NSImage alloc] init]
                                          target:target
                                          action:action];
    button.bordered = NO;
    button.toolTip = nsString(toolTip);
    return button;
}

void setUp(NSPopUpButton* popUp, int width, id target, SEL action) {
    popUp.cell.lineBreakMode = NSLineBreakByTruncatingTail;
    popUp.target = target;
    popUp.action = action;
    fixWidth(popUp, width);
}

NSStackView* row(NSArray<NSView*>* views) {
    NSStackView* row = [NSStackView stackViewWithViews:views];
    row.orientation = NSUserInterfaceLayoutOrientationHorizontal;
    row.alignment = NSLayoutAttributeCenterY;
    row.distribution = NSStackViewDistributionFill;
    row.spacing = kSpacing;
    row.detachesHiddenViews = YES;
    hug(row);
    return row;
}

NSStackView* column(NSArray<NSView*>* views, CGFloat spacing) {
    NSStackView* column = [NSStackView stackViewWithViews:views];
    column.orientation = NSUserInterfaceLayoutOrientationVertical;
    column.alignment = NSLayoutAttributeLeading;
    column.distribution = NSStackViewDistributionFill;
    column.spacing = spacing;
    column.detachesHiddenViews = YES;
    hug(column);
    // A constraint of the view alone: others are lost when it is hidden.
    for (NSView* view in views) {
        prefer([view.widthAnchor constraintEqualToConstant:kWide], kWidePriority);
    }
    return column;
}

NSBox* group(std::string_view title, NSView* content) {
    NSBox* box = [[NSBox alloc] initWithFrame:kSomeFrame];
    box.boxType = NSBoxPrimary;
    box.title = nsString(title);
    box.titlePosition = NSAtTop;
    fill(box.contentView, content, kSpacing);
    return box;
}

void stretch(NSView* view) {
    [view setContentHuggingPriority:kStretchPriority
                     forOrientation:NSLayoutConstraintOrientationHorizontal];
    [view setContentCompressionResistancePriority:NSLayoutPriorityDefaultLow
                                   forOrientation:NSLayoutConstraintOrientationHorizontal];
}

NSView* spacer() {
    NSView* view = [[NSView alloc] init];
    prefer([view.widthAnchor constraintEqualToConstant:0], kStretchPriority);
    return view;
}

void fixWidth(NSView* view, int width) {
    [view.widthAnchor constraintEqualToConstant:width].active = YES;
}

void fill(NSView* outer, NSView* inner, CGFloat inset) {
    inner.translatesAutoresizingMaskIntoConstraints = NO;
    [outer addSubview:inner];
    [NSLayoutConstraint activateConstraints:@[
        [inner.leadingAnchor constraintEqualToAnchor:outer.leadingAnchor constant:inset],
        [inner.trailingAnchor constraintEqualToAnchor:outer.trailingAnchor constant:-inset],
        [inner.topAnchor constraintEqualToAnchor:outer.topAnchor constant:inset],
        [inner.bottomAnchor constraintEqualToAnchor:outer.bottomAnchor constant:-inset],
    ]];
}

void setTitles(NSPopUpButton* popUp, const std::vector<std::string>& titles) {
    [popUp removeAllItems];
    for (const std::string& title : titles) {
        [popUp.menu addItem:[[NSMenuItem alloc] initWithTitle:nsString(title)
                                                       action:nil
                                                keyEquivalent:@""]];
    }
}

}  // namespace ferrivane::Views
