#import "Ferrivane/macos/SettingsContentView.h"

#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsWindow.h"
#import "Ferrivane/macos/BannerView.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/LinkTesterView.h"
#import "Ferrivane/macos/ProfilePickerView.h"
#import "Ferrivane/macos/RulesListView.h"
#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;
namespace Controls = ferrivane::SettingsControls;

static constexpr CGFloat kGroupSpacing = 12;
static constexpr CGFloat kLineSpacing = 8;

@implementation FVSettingsContentView {
    SettingsView* _view;
    Observers::Subscription _ofStore;
    Observers::Subscription _ofView;
    BOOL _mustRender;

    FVBannerView* _defaultBrowser;
    NSButton* _makeDefault;
    FVBannerView* _helper;
    NSButton* _installHelper;
    NSButton* _showFolders;
    NSTextField* _noRules;
    FVRulesListView* _rules;
    NSButton* _addRule;
    FVProfilePickerView* _defaultProfile;
    FVLinkTesterView* _tester;
    NSButton* _menuBarIcon;
    NSButton* _editRules;
    NSButton* _showLog;
    NSTextField* _version;
    NSStackView* _problem;
    NSTextField* _problemText;
}

- (instancetype)initWithView:(SettingsView&)view {
    self = [super initWithFrame:NSZeroRect];
    if (!self) return nil;
    _view = &view;
    _tester = [[FVLinkTesterView alloc] initWithView:view];
    NSStackView* whole = Views::column(
        @[
            [self makeDefaultBrowserBanner], [self makeHelperBanner],
            Views::group(SettingsView::rulesTitle, [self makeRules]),
            Views::group(SettingsView::testerTitle, _tester),
            Views::group(SettingsView::optionsTitle, [self makeOptions]), [self makeProblem]
        ],
        kGroupSpacing);
    [whole setHuggingPriority:NSLayoutPriorityDefaultLow
               forOrientation:NSLayoutConstraintOrientationVertical];
    Views::fill(self, whole, SettingsWindow::padding);
    [self linkKeyViews];
    [self observe];
    [self render];
    return self;
}

- (void)observe {
    __weak FVSettingsContentView* weakSelf = self;
    const auto changed = [weakSelf] { [weakSelf renderLater]; };
    _ofStore = _view->store().willChange.add(changed);
    _ofView = _view->willChange.add(changed);
}

// Each of several changes in a row is told.
- (void)renderLater {
    if (_mustRender) return;
    _mustRender = YES;
    __weak FVSettingsContentView* weakSelf = self;
    dispatch_async(dispatch_get_main_queue(), ^{
      [weakSelf render];
    });
}

- (NSView*)makeDefaultBrowserBanner {
    _makeDefault = Views::button(Controls::makeDefault, "", self, @selector(makeDefaultBrowser:));
    _defaultBrowser = [[FVBannerView alloc] initWithText:Controls::defaultBrowserText
                                                 buttons:@[ _makeDefault ]];
    return _defaultBrowser;
}

- (NSView*)makeHelperBanner {
    _installHelper = Views::button(Controls::installHelper, "", self, @selector(installHelper:));
    _showFolders = Views::button(Controls::showFolders, SettingsView::showFoldersTitle, self,
                                 @selector(showFolders:));
    _showFolders.toolTip = nsString(SettingsView::showFoldersToolTip);
    _helper = [[FVBannerView alloc] initWithText:Controls::helperText
                                         buttons:@[ _installHelper, _showFolders ]];
    return _helper;
}

- (NSView*)makeRules {
    _noRules = Views::label(SettingsView::noRules);
    Views::identify(_noRules, Controls::noRules);
    [_noRules setContentHuggingPriority:NSLayoutPriorityDefaultLow
                         forOrientation:NSLayoutConstraintOrientationVertical];
    _rules = [[FVRulesListView alloc] initWithView:*_view];

    _addRule =
        Views::button(Controls::addRule, SettingsView::addRuleTitle, self, @selector(addRule:));
    _addRule.image = [NSImage imageWithSystemSymbolName:@"plus" accessibilityDescription:nil];
    _addRule.imagePosition = NSImageLeading;
    NSTextField* hint = Views::secondaryLabel(SettingsView::rulesHint);

    _defaultProfile = [[FVProfilePickerView alloc] initWithFrame:NSZeroRect pullsDown:NO];
    _defaultProfile.toolTip = nsString(SettingsView::defaultProfileToolTip);
    Views::identify(_defaultProfile, Controls::defaultProfile);
    Views::setUp(_defaultProfile, SettingsWindow::defaultProfileWidth, self,
                 @selector(chooseDefaultProfile:));
    NSTextField* caption = Views::secondaryLabel(SettingsView::defaultProfileCaption);

    NSStackView* rules = Views::column(
        @[
            _noRules, _rules, Views::row(@[ _addRule, hint, Views::spacer() ]), Views::row(@[
                Views::label(SettingsView::defaultProfileLabel), _defaultProfile, caption,
                Views::spacer()
            ])
        ],
        kLineSpacing);
    // Of a tall window the rules take what is left.
    [rules setHuggingPriority:NSLayoutPriorityDefaultLow
               forOrientation:NSLayoutConstraintOrientationVertical];
    return rules;
}

- (NSView*)makeOptions {
    _menuBarIcon = [NSButton checkboxWithTitle:nsString(SettingsView::menuBarIconTitle)
                                        target:self
                                        action:@selector(toggleMenuBarIcon:)];
    Views::identify(_menuBarIcon, Controls::menuBarIcon);
    _editRules = Views::button(Controls::editRules, SettingsView::editRulesTitle, self,
                               @selector(editRules:));
    _showLog =
        Views::button(Controls::showLog, SettingsView::showLogTitle, self, @selector(showLog:));
    _version = Views::secondaryLabel("");
    Views::identify(_version, Controls::version);
    return Views::row(@[ _menuBarIcon, _editRules, _showLog, Views::spacer(), _version ]);
}

- (NSView*)makeProblem {
    _problemText = Views::wrappingLabel();
    _problemText.textColor = NSColor.systemRedColor;
    Views::identify(_problemText, Controls::problem);
    _problem = Views::row(
        @[ Views::symbol("exclamationmark.triangle", NSColor.systemRedColor), _problemText ]);
    return _problem;
}

// The Tab key's way. What is hidden is passed over.
- (void)linkKeyViews {
    NSArray<NSView*>* views =
        @[ self, _makeDefault, _installHelper, _showFolders, _rules.table, _addRule ];
    views = [views arrayByAddingObject:_defaultProfile];
    views = [views arrayByAddingObjectsFromArray:_tester.keyViews];
    views = [views arrayByAddingObjectsFromArray:@[ _menuBarIcon, _editRules, _showLog, self ]];
    for (NSUInteger i = 0; i + 1 < views.count; ++i) views[i].nextKeyView = views[i + 1];
    _rules.following = _addRule;
}

- (void)render {
    _mustRender = NO;
    const RulesStore& store = _view->store();
    [_defaultBrowser show:_view->defaultBrowserBanner()];
    const auto helper = _view->helperBanner();
    _helper.hidden = !helper;
    if (helper) [_helper show:*helper];

    const bool hasRules = !store.config().rules.empty();
    _noRules.hidden = hasRules;
    _rules.hidden = !hasRules;
    [_rules render];
    [_defaultProfile showChoices:_view->profileChoices(store.config().defaultProfile)];

    [_tester render];
    _menuBarIcon.state = _view->showMenuBarIcon() ? NSControlStateValueOn : NSControlStateValueOff;
    _version.stringValue = nsString(_view->version());
    _problem.hidden = !store.problem();
    _problemText.stringValue = nsString(store.problem().value_or(""));
}

- (void)tellFocus {
    [_rules tellFocus];
}

- (void)makeDefaultBrowser:(id)sender {
    _view->makeDefaultBrowser();
}

- (void)installHelper:(id)sender {
    _view->installHelper();
}

- (void)showFolders:(id)sender {
    _view->revealHelper();
}

- (void)addRule:(id)sender {
    _view->addRule();
}

- (void)chooseDefaultProfile:(id)sender {
    _view->setDefaultProfile([_defaultProfile chosenValue]);
}

- (void)toggleMenuBarIcon:(id)sender {
    _view->setShowMenuBarIcon(_menuBarIcon.state == NSControlStateValueOn);
}

- (void)editRules:(id)sender {
    _view->editRules();
}

- (void)showLog:(id)sender {
    _view->showLog();
}

@end
