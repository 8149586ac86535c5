#import "Ferrivane/macos/LinkTesterView.h"

#include <vector>

#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsWindow.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;

static constexpr CGFloat kLineSpacing = 8;

@interface FVLinkTesterView () <NSTextFieldDelegate>
@end

@implementation FVLinkTesterView {
    SettingsView* _view;
    std::vector<SettingsView::Sender> _senders;
    NSTextField* _url;
    NSPopUpButton* _app;
    NSTextField* _result;
}

- (instancetype)initWithView:(SettingsView&)view {
    self = [super initWithFrame:NSZeroRect];
    if (!self) return nil;
    _view = &view;
    _url = Views::field();
    _url.placeholderString = nsString(SettingsView::testerPlaceholder);
    _url.delegate = self;
    Views::identify(_url, SettingsControls::testURL);

    _app = [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO];
    Views::identify(_app, SettingsControls::testApp);
    Views::setUp(_app, SettingsWindow::senderWidth, self, @selector(chooseApp:));

    _result = Views::wrappingLabel();
    _result.selectable = YES;
    _result.font = [NSFont preferredFontForTextStyle:NSFontTextStyleCallout options:@{}];
    _result.textColor = NSColor.secondaryLabelColor;
    Views::identify(_result, SettingsControls::testResult);
    Views::fill(self, Views::column(@[ Views::row(@[ _url, _app ]), _result ], kLineSpacing), 0);
    return self;
}

- (void)render {
    Views::setText(_url, _view->testURL());
    const SettingsView::Senders senders = _view->senders();
    if (senders.all != _senders) {
        _senders = senders.all;
        std::vector<std::string> names;
        for (const auto& sender : _senders) names.push_back(sender.name);
        Views::setTitles(_app, names);
    }
    [_app selectItemAtIndex:NSInteger(senders.current)];
    Views::setText(_result, _view->testResult());
}

- (NSArray<NSView*>*)keyViews {
    return @[ _url, _app ];
}

- (void)controlTextDidChange:(NSNotification*)notification {
    _view->setTestURL(utf8(_url.stringValue));
}

- (void)chooseApp:(id)sender {
    _view->setTestAppPid(_senders.at(std::size_t(_app.indexOfSelectedItem)).process);
}

@end
