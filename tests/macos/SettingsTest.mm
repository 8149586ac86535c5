#import "tests/macos/SettingsTest.h"

#include "Ferrivane/SettingsWindow.h"

namespace ferrivane::test {
namespace {

constexpr const char* kOwn = "/Applications/Ferrivane.app";
constexpr const char* kOther = "/Applications/Other.app";

NSView* findBelow(NSView* view, NSString* identifier) {
    if (view.hidden) return nil;
    if ([view.accessibilityIdentifier isEqualToString:identifier]) return view;
    for (NSView* child in view.subviews) {
        if (NSView* found = findBelow(child, identifier)) return found;
    }
    return nil;
}

void turn() {
    @autoreleasepool {
        [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode
                            beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.01]];
    }
}

}  // namespace

SettingsTest::SettingsTest() {
    [NSApplication sharedApplication];
    fake.desktop = Desktop::macOS;
    fake.isSandboxed = false;
    fake.applications.bundle = {std::string(AppInfo::bundleIdentifier), "1.2", kOwn};
    fake.applications.identifiers[kOwn] = AppInfo::bundleIdentifier;
    fake.applications.identifiers[kOther] = "org.example.other";
    for (const char* scheme : {"http", "https"}) fake.applications.handlers[scheme] = kOther;
    fake.applications.applicationsRunning = {
        {7, "Mail", "org.example.mail", "/Applications/Mail.app"},
        {8, "Chat", "org.example.chat", "/Applications/Chat.app"}};
    writeCatalogue({{"Default", "Home", {}, {}}, {"Profile 1", "Work", {}, {}}});
    writeRules(R"({"rules": [{"kind": "host", "match": "a.example", "profile": "Work"},
                             {"kind": "url", "match": "b", "profile": "Home"},
                             {"kind": "app", "match": "Mail", "profile": "Gone"}]})");
    store.emplace(fake.platform(), log, rulesFile);
    store->reload();
    view.emplace(fake.platform(), *store, menuBar);
}

SettingsTest::~SettingsTest() {
    if (controller) {
        [controller close];
        draw();
        controller = nil;
    }
    [NSWindow removeFrameUsingName:nsString(SettingsWindow::autosaveName)];
}

NSWindow* SettingsTest::window() {
    if (!controller) {
        controller = [[FVSettingsWindowController alloc] initWithView:*view];
        [controller show];
        draw();
    }
    return controller.window;
}

NSView* SettingsTest::find(const Control& control, NSView* below) {
    return findBelow(below ? below : window().contentView, nsString(control.identifier));
}

FVRuleRowView* SettingsTest::row(NSInteger index) {
    return [table() viewAtColumn:0 row:index makeIfNecessary:YES];
}

NSTextField* SettingsTest::matchOf(NSInteger index) {
    return (NSTextField*)find(SettingsControls::match, row(index));
}

void SettingsTest::draw() {
    __block bool isDone = false;
    dispatch_async(dispatch_get_main_queue(), ^{
      isDone = true;
    });
    while (!isDone) turn();
    [controller.window layoutIfNeeded];
}

bool SettingsTest::becomesTrue(const std::function<bool()>& condition, NSTimeInterval within) {
    NSDate* end = [NSDate dateWithTimeIntervalSinceNow:within];
    while (!condition() && end.timeIntervalSinceNow > 0) turn();
    return condition();
}

void SettingsTest::choose(NSView* popUp, NSInteger index) {
    NSPopUpButton* button = (NSPopUpButton*)popUp;
    [button selectItemAtIndex:index];
    [button sendAction:button.action to:button.target];
    draw();
}

void SettingsTest::type(std::string_view text) {
    NSTextView* editor = (NSTextView*)window().firstResponder;
    ASSERT_TRUE([editor isKindOfClass:NSTextView.class]);
    [editor insertText:nsString(text) replacementRange:editor.selectedRange];
}

void SettingsTest::useRules(std::size_t count) {
    Config config = store->config();
    config.rules.clear();
    for (std::size_t i = 0; i < count; ++i) {
        config.rules.emplace_back(Rule::Kind::host, std::to_string(i) + ".example", "Work");
    }
    store->setConfig(std::move(config));
}

}  // namespace ferrivane::test
