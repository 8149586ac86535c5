#import "Ferrivane/macos/SettingsWindow.h"

#include "Ferrivane/SettingsControls.h"
#include "Ferrivane/SettingsWindow.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/SettingsContentView.h"
#import "Ferrivane/macos/SettingsFileWatch.h"

using namespace ferrivane;

static NSSize nsSize(const SettingsWindow::Size& size) {
    return NSMakeSize(size.width, size.height);
}

// Links and patterns stay as they are typed.
static void leaveTextAlone(NSWindow* window) {
    NSTextView* editor = (NSTextView*)[window fieldEditor:YES forObject:nil];
    editor.automaticQuoteSubstitutionEnabled = NO;
    editor.automaticDashSubstitutionEnabled = NO;
    editor.automaticTextReplacementEnabled = NO;
    editor.automaticSpellingCorrectionEnabled = NO;
}

@implementation FVSettingsWindow

- (void)sendEvent:(NSEvent*)event {
    if (event.type == NSEventTypeLeftMouseDown &&
        [self.firstResponder isKindOfClass:NSTextView.class]) {
        NSView* content = self.contentView;
        const NSPoint point = [content.superview convertPoint:event.locationInWindow fromView:nil];
        if (![[content hitTest:point] isKindOfClass:NSTextView.class]) {
            [self makeFirstResponder:nil];
        }
    }
    [super sendEvent:event];
}

@end

@implementation FVSettingsWindowController {
    SettingsView* _view;
    FVSettingsContentView* _content;
    FVSettingsFileWatch* _watch;
}

- (instancetype)initWithView:(SettingsView&)view {
    const NSSize size = nsSize(SettingsWindow::size);
    FVSettingsWindow* window = [[FVSettingsWindow alloc]
        initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                            NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                    backing:NSBackingStoreBuffered
                      defer:NO];
    self = [super initWithWindow:window];
    if (!self) return nil;
    _view = &view;
    __weak FVSettingsWindowController* weakSelf = self;
    view.isInteracting = [weakSelf] { return weakSelf.isTracking; };
    _content = [[FVSettingsContentView alloc] initWithView:view];
    window.title = nsString(SettingsWindow::title);
    window.accessibilityIdentifier = nsString(SettingsControls::window.identifier);
    window.releasedWhenClosed = NO;
    // Or the system might ask, in front of the first link, whether to open it again.
    window.restorable = NO;
    window.minSize = nsSize(SettingsWindow::minimumSize);
    NSViewController* content = [[NSViewController alloc] initWithNibName:nil bundle:nil];
    content.view = _content;
    window.contentViewController = content;
    // The Tab key's way is the content's own.
    window.autorecalculatesKeyViewLoop = NO;
    window.initialFirstResponder = _content;
    [window setContentSize:size];
    [window center];
    self.shouldCascadeWindows = NO;
    [window setFrameAutosaveName:nsString(SettingsWindow::autosaveName)];
    window.delegate = self;
    leaveTextAlone(window);
    return self;
}

- (void)show {
    NSWindow* window = self.window;
    const bool appears = !window.visible;
    if (appears) {
        _view->refresh();
        [_content render];
        [self watchRules];
    }
    [NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
    if (window.miniaturized) [window deminiaturize:nil];
    [window makeKeyAndOrderFront:nil];
    // No rule is edited before the person means to.
    if (appears) [window makeFirstResponder:nil];
    [NSApp activateIgnoringOtherApps:YES];
}

- (void)watchRules {
    SettingsView* view = _view;
    _watch = [[FVSettingsFileWatch alloc] initWithFile:view->store().fileURL()
                                               changed:^{
                                                 view->rulesFileChanged();
                                               }];
}

// A menu is open, a control is pressed, or a rule is dragged. What waits for the end of it is told
// of the end.
- (BOOL)isTracking {
    NSRunLoop* loop = NSRunLoop.mainRunLoop;
    if (![loop.currentMode isEqualToString:NSEventTrackingRunLoopMode]) return NO;
    __weak FVSettingsWindowController* weakSelf = self;
    [loop performInModes:@[ NSDefaultRunLoopMode ]
                   block:^{
                     [weakSelf readChanges];
                   }];
    return YES;
}

- (void)readChanges {
    _view->readChanges();
}

- (void)windowWillClose:(NSNotification*)notification {
    [self.window makeFirstResponder:nil];
    _watch = nil;
    [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

// While another window has the focus nothing is edited, and what others write is read.
- (void)windowDidResignKey:(NSNotification*)notification {
    _view->setFocusedRule(std::nullopt);
}

- (void)windowDidBecomeKey:(NSNotification*)notification {
    [_content tellFocus];
}

@end
