// The alert about a link that could not be opened.
#include <gtest/gtest.h>

#include "Ferrivane/Router.h"
#import "Ferrivane/macos/Conversions.h"
#import "Ferrivane/macos/MacDialogs.h"

namespace ferrivane {
namespace {

LaunchFailureAlert failureOf(const std::string& link) {
    return launchFailureAlert(link, ChromeLauncher::LaunchError{});
}

TEST(MacDialogsTest, AnAlertSaysWhatHasFailed) {
    NSAlert* const alert = alertOf(failureOf("https://a.example/?q"));
    EXPECT_EQ(alert.alertStyle, NSAlertStyleWarning);
    EXPECT_EQ(utf8(alert.messageText), "Couldn't open the link in Google Chrome");
    EXPECT_EQ(utf8(alert.informativeText),
              "Google Chrome is not installed\n\nhttps://a.example/?q");
    ASSERT_EQ(alert.buttons.count, 2U);
    EXPECT_EQ(utf8(alert.buttons[0].title), "Copy Link");
    EXPECT_EQ(utf8(alert.buttons[0].keyEquivalent), "\r") << "the default";
    EXPECT_EQ(utf8(alert.buttons[1].title), "OK");
    EXPECT_EQ(utf8(alert.buttons[1].keyEquivalent), "\033") << "what Escape presses";
    EXPECT_EQ(alert.accessoryView, nil);
}

TEST(MacDialogsTest, ALongLinkScrolls) {
    const LaunchFailureAlert failure = failureOf("https://a.example/" + std::string(5000, 'x'));
    NSAlert* const alert = alertOf(failure);
    NSScrollView* const scroll = (NSScrollView*)alert.accessoryView;
    ASSERT_TRUE([scroll isKindOfClass:NSScrollView.class]);
    NSTextView* const view = (NSTextView*)scroll.documentView;
    EXPECT_EQ(utf8(view.string), failure.informativeText);
    EXPECT_FALSE(view.editable);
    [alert layout];
    EXPECT_LT(alert.window.frame.size.height, 600);
}

TEST(MacDialogsTest, AnOpenAlertDoesNotHoldUpTheEndOfTheSession) {
    EXPECT_FALSE(
        alertOf(failureOf("https://a.example")).window.preventsApplicationTerminationWhenModal);
}

}  // namespace
}  // namespace ferrivane
