// What AppKit tells the application, as the application gets it.
#import <Cocoa/Cocoa.h>
#include <gmock/gmock.h>
#include <unistd.h>

#import "Ferrivane/macos/ApplicationDelegate.h"
#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Events : ApplicationEvents {
    std::vector<LinkEvent> links;
    std::vector<std::string> paths;
    int reopened = 0;
    int terminated = 0;

    bool handleGetURL(const LinkEvent& event) override {
        links.push_back(event);
        return true;
    }
    void openFiles(const std::vector<std::string>& files, const LinkEvent&) override {
        paths = files;
    }
    void reopen(const std::optional<std::string>&) override { ++reopened; }
    bool performAction(std::string_view, const std::optional<std::string>&) override {
        return false;
    }
    void sessionEnded() override {}
    void terminate() override { ++terminated; }
};

// A GetURL event; without a link when that is nil.
NSAppleEventDescriptor* getURL(NSString* link) {
    NSAppleEventDescriptor* const event =
        [NSAppleEventDescriptor appleEventWithEventClass:kInternetEventClass
                                                 eventID:kAEGetURL
                                        targetDescriptor:nil
                                                returnID:kAutoGenerateReturnID
                                           transactionID:kAnyTransactionID];
    if (link != nil) {
        [event setParamDescriptor:[NSAppleEventDescriptor descriptorWithString:link]
                       forKeyword:keyDirectObject];
    }
    return event;
}

struct ApplicationDelegateTest : ::testing::Test {
    Events events;
    MacMainLoop loop;
    FVApplicationDelegate* delegate = [[FVApplicationDelegate alloc] initWithEvents:events
                                                                               loop:loop];

    void send(NSAppleEventDescriptor* event) {
        [delegate handleGetURL:event withReplyEvent:[NSAppleEventDescriptor nullDescriptor]];
    }
};

TEST_F(ApplicationDelegateTest, ALinkArrivesAsItWasSent) {
    send(getURL(@"https://example.com/ä?q=%20"));
    ASSERT_EQ(events.links.size(), 1U);
    EXPECT_THAT(events.links[0].urls, ElementsAre("https://example.com/ä?q=%20"));
    EXPECT_EQ(events.links[0].activationToken, std::nullopt);
}

TEST_F(ApplicationDelegateTest, AnEventWithoutALinkIsHandedOnToo) {
    send(getURL(nil));
    ASSERT_EQ(events.links.size(), 1U);
    EXPECT_THAT(events.links[0].urls, IsEmpty());
}

TEST_F(ApplicationDelegateTest, TheSenderIsTheEventsAttribute) {
    NSAppleEventDescriptor* const event = getURL(@"https://example.com");
    [event setAttributeDescriptor:[NSAppleEventDescriptor descriptorWithInt32:4711]
                       forKeyword:keySenderPIDAttr];
    send(event);
    ASSERT_EQ(events.links.size(), 1U);
    EXPECT_EQ(events.links[0].sender, 4711);
}

TEST_F(ApplicationDelegateTest, TheHandlerIsThereBeforeLaunchingHasFinished) {
    [delegate applicationWillFinishLaunching:[NSNotification notificationWithName:@"test"
                                                                           object:nil]];
    NSAppleEventDescriptor* const event = getURL(@"https://example.com");
    const AppleEvent* const raw = event.aeDesc;
    AppleEvent reply{typeNull, nullptr};
    const OSErr error = [NSAppleEventManager.sharedAppleEventManager dispatchRawAppleEvent:raw
                                                                              withRawReply:&reply
                                                                             handlerRefCon:&events];
    [NSAppleEventManager.sharedAppleEventManager removeEventHandlerForEventClass:kInternetEventClass
                                                                      andEventID:kAEGetURL];
    EXPECT_EQ(error, noErr);
    EXPECT_EQ(events.links.size(), 1U);
}

TEST_F(ApplicationDelegateTest, FilesComeInTheirOrder) {
    [delegate application:NSApp openFiles:@[ @"/tmp/a b.html", @"/tmp/ä.xhtml" ]];
    EXPECT_THAT(events.paths, ElementsAre("/tmp/a b.html", "/tmp/ä.xhtml"));
}

TEST_F(ApplicationDelegateTest, AReopenIsTheApplicationsOwnMatter) {
    EXPECT_FALSE([delegate applicationShouldHandleReopen:NSApp hasVisibleWindows:NO]);
    EXPECT_EQ(events.reopened, 1);
}

TEST_F(ApplicationDelegateTest, TheEndWaitsForTheApplication) {
    EXPECT_EQ([delegate applicationShouldTerminate:NSApp], NSTerminateLater);
    EXPECT_EQ(events.terminated, 1);
}

TEST_F(ApplicationDelegateTest, ClosingTheLastWindowEndsNothing) {
    EXPECT_FALSE(
        [delegate respondsToSelector:@selector(applicationShouldTerminateAfterLastWindowClosed:)]);
}

}  // namespace
}  // namespace ferrivane
