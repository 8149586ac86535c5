#import "Ferrivane/macos/LinkTesterView.h"

#include <algorithm>
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
    std::vector<RunningApp> _apps;
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
    [self fillMenu];

    _result = Views::wrappingLabel();
    _result.selectable = YES;
    _result.font = [NSFont preferredFontForTextStyle:NSFontTextStyleCallout options:@{}];
    _result.textColor = NSColor.secondaryLabelColor;
    Views::identify(_result, SettingsControls::testResult);
    Views::fill(self, Views::column(@[ Views::row(@[ _url, _app ]), _result ], kLineSpacing), 0);
    return self;
}

- (void)fillMenu {
    std::vector<std::string> titles{std::string(SettingsView::unknownApp)};
    for (const RunningApp& app : _apps) titles.push_back(app.name);
    Views::setTitles(_app, titles);
}

- (void)render {
    Views::setText(_url, _view->testURL());
    if (_apps != _view->runningApps()) {
        _apps = _view->runningApps();
        [self fillMenu];
    }
    // A sender that runs no more is unknown.
    const auto app = std::ranges::find(_apps, _view->testAppPid(), &RunningApp::id);
    [_app selectItemAtIndex:app == _apps.end() ? 0 : app - _apps.begin() + 1];
    Views::setText(_result, _view->testResult());
}

- (NSArray<NSView*>*)keyViews {
    return @[ _url, _app ];
}

- (void)controlTextDidChange:(NSNotification*)notification {
    _view->setTestURL(utf8(_url.stringValue));
}

- (void)chooseApp:(id)sender {
    const NSInteger index = _app.indexOfSelectedItem;
    _view->setTestAppPid(index > 0 ? std::optional(_apps.at(std::size_t(index - 1)).id)
                                   : std::nullopt);
}

@end
