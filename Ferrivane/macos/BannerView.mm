#import "Ferrivane/macos/BannerView.h"

#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;
using Banner = SettingsView::Banner;

@implementation FVBannerView {
    NSImageView* _symbol;
    NSTextField* _text;
    NSArray<NSButton*>* _buttons;
}

- (instancetype)initWithText:(const Control&)text buttons:(NSArray<NSButton*>*)buttons {
    self = [super initWithFrame:NSZeroRect];
    if (!self) return nil;
    _symbol = Views::symbol("", NSColor.systemOrangeColor);
    _text = Views::wrappingLabel();
    Views::identify(_text, text);
    _buttons = [buttons copy];
    NSArray<NSView*>* line = @[ _symbol, _text ];
    Views::fill(self, Views::row([line arrayByAddingObjectsFromArray:buttons]), 0);
    return self;
}

- (void)show:(const Banner&)banner {
    _symbol.image = [NSImage imageWithSystemSymbolName:nsString(banner.symbol)
                              accessibilityDescription:nil];
    _symbol.contentTintColor =
        banner.tint == Banner::Tint::green ? NSColor.systemGreenColor : NSColor.systemOrangeColor;
    _text.stringValue = nsString(banner.text);
    for (NSButton* button in _buttons) button.hidden = banner.button.empty();
    if (!banner.button.empty()) _buttons.firstObject.title = nsString(banner.button);
}

@end
