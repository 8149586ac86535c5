// Links and files that the session sends to the resident application.
#include <gmock/gmock.h>
#include <unistd.h>

#include "Ferrivane/AppDelegate.h"
#include "tests/app/AppTest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr pid_t kMail = 4000;
constexpr const char* kLookUp = "applications.runningApplication ";

std::string launchOf(const std::string& link) {
    return "browser.launch /apps/google-chrome.desktop [--profile-directory=Default] [" + link +
           "]";
}

class AppDelegateLinks : public test::AppTest {
  protected:
    AppDelegateLinks() {
        writeRules("{}");
        writeCatalogue({{"Default", "Default", {}, {}}});
        fake.applications.openers[kMail] = {"Mail", "org.example.Mail", "/usr/bin/mail"};
    }

    // What was launched for these links, once everything is done.
    std::vector<std::string> launchesFor(std::vector<std::string> urls,
                                         std::optional<pid_t> sender = {}) {
        fake.calls.clear();
        app.handleGetURL({.urls = std::move(urls), .sender = sender});
        fake.mainLoop.runUntilIdle();
        return fake.calls.of({"browser.launch"});
    }
    std::string refusalOf(const std::string& url) {
        EXPECT_FALSE(app.handleGetURL({.urls = {url}}));
        const auto lines = newLogLines();
        return lines.size() == 1 ? lines[0] : "not one line";
    }

    AppDelegate app{fake.platform(), log, true, rulesFile};
};

TEST_F(AppDelegateLinks, TheLinkGoesToTheRouterAsItCame) {
    for (const char* url : {"https://a.example/", "HTTPS://A.EXAMPLE/ü?x= y", "not a URL at all",
                            "etc/hostname", "mailto:x@y", " ferrivane", "ferrivanes:x", "\xFF"}) {
        EXPECT_THAT(launchesFor({url}), ElementsAre(launchOf(url)));
    }
}

TEST_F(AppDelegateLinks, ItIsQueuedAndNotYetRoutedWhenTheEventIsAnswered) {
    EXPECT_TRUE(app.handleGetURL({.urls = {"https://a/"}, .sender = kMail}));
    EXPECT_THAT(fake.calls.texts(), ElementsAre(kLookUp + std::to_string(kMail)))
        << "the sender lives only until the answer";
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(newLogLines(), ElementsAre("[INFO] https://a/… from Mail (org.example.Mail) → "
                                           "Default [Default] via default",
                                           "[INFO]   launched Chrome (pid 500) (0 ms)"));
}

TEST_F(AppDelegateLinks, WhoHasNoOpener) {
    const struct {
        const char* name;
        std::optional<pid_t> sender;
        bool isLookedUp;
    } rows[] = {
        {"a sender that the session does not know", std::nullopt, false},
        {"no process", 0, false},
        {"a negative number", -1, false},
        {"this process itself", ::getpid(), false},
        {"a process that is gone", 4001, true},
    };
    for (const auto& row : rows) {
        launchesFor({"https://a/"}, row.sender);
        EXPECT_EQ(fake.calls.count(kLookUp), row.isLookedUp ? 1U : 0U) << row.name;
        EXPECT_THAT(newLogLines(),
                    ElementsAre("[INFO] https://a/… from unknown app → Default [Default] via "
                                "default",
                                "[INFO]   launched Chrome (pid 500) (0 ms)"))
            << row.name;
    }
}

TEST_F(AppDelegateLinks, OneOpenerServesEveryLinkOfAnEvent) {
    EXPECT_THAT(launchesFor({"https://a/", "https://b/"}, kMail),
                ElementsAre(launchOf("https://a/"), launchOf("https://b/")));
    EXPECT_EQ(fake.calls.count(kLookUp), 1U);
    EXPECT_THAT(fake.calls.texts()[0], kLookUp + std::to_string(kMail));
}

TEST_F(AppDelegateLinks, AStartupIdSpeaksForASenderThatIsGone) {
    app.handleGetURL({.urls = {"https://a/"}, .startupId = "x-1-y_TIME0"});
    EXPECT_THAT(fake.calls.texts(), ElementsAre(std::string(kLookUp) + "0 x-1-y_TIME0"));
}

TEST_F(AppDelegateLinks, AStartupIdGoesAlong) {
    app.handleGetURL({.urls = {"https://a/"}, .sender = kMail, .startupId = "x-1-y_TIME0"});
    EXPECT_THAT(fake.calls.texts(), ElementsAre(kLookUp + std::to_string(kMail) + " x-1-y_TIME0"));
}

TEST_F(AppDelegateLinks, ATokenIsForTheFirstLinkAlone) {
    app.handleGetURL({.urls = {"https://a/", "https://b/"}, .activationToken = "token"});
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(fake.calls.of({"browser.launch"}),
                ElementsAre(launchOf("https://a/") + " token=token", launchOf("https://b/")));
}

TEST_F(AppDelegateLinks, OneOfOurOwnOpensTheSettings) {
    for (const char* url :
         {"ferrivane:", "ferrivane://settings?x=y", "FERRIVANE:x", "FerriVane:"}) {
        fake.calls.clear();
        EXPECT_TRUE(app.handleGetURL({.urls = {url}, .sender = kMail, .activationToken = "token"}));
        fake.mainLoop.runUntilIdle();
        EXPECT_THAT(fake.calls.of({"userInterface."}),
                    ElementsAre("userInterface.showSettings token"))
            << url;
    }
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(AppDelegateLinks, AnEventWithoutALinkIsDropped) {
    EXPECT_FALSE(app.handleGetURL({}));
    EXPECT_FALSE(app.handleGetURL({.urls = {""}}));
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(newLogLines(), ElementsAre("[WARN] GetURL event without a URL",
                                           "[WARN] GetURL event without a URL"));
    EXPECT_TRUE(fake.calls.empty());
}

TEST_F(AppDelegateLinks, SeveralFilesComeInTheirOrderWithOneOpener) {
    app.openFiles({"/home/ada/b c.html", "/home/ada/a.html"}, {.sender = kMail});
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(
        fake.calls.of({"browser.launch", kLookUp}),
        ElementsAre(kLookUp + std::to_string(kMail), launchOf("file:///home/ada/b%20c.html"),
                    launchOf("file:///home/ada/a.html")));
}

TEST_F(AppDelegateLinks, AFileWithoutAnEventHasNoOpener) {
    app.openFiles({"/a"}, {});
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(fake.calls.of({"browser.launch", kLookUp}), ElementsAre(launchOf("file:///a")));
}

TEST_F(AppDelegateLinks, ATextThatIsASwitchIsRefusedAtTheDoor) {
    for (const char* url : {"-", "--renderer-cmd-prefix=touch /tmp/x", " -x", "\t\n\r\v\f--x"}) {
        EXPECT_EQ(refusalOf(url), "[WARN] refused a link that Chrome would take for a switch");
    }
    fake.mainLoop.runUntilIdle();
    EXPECT_TRUE(fake.calls.empty());
}

TEST_F(AppDelegateLinks, WhereNoCallerHearsOfItASwitchIsRefusedWithAnAlert) {
    fake.desktop = Desktop::macOS;
    AppDelegate onMac(fake.platform(), log, true, rulesFile);
    EXPECT_TRUE(onMac.handleGetURL({.urls = {" --x"}}));
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(fake.calls.count("browser.launch"), 0U);
    EXPECT_EQ(fake.calls.count("dialogs.showLaunchFailure"), 1U);
    EXPECT_EQ(newLogLines().back(), "[ERROR]   Chrome launch failed: not a URL:  --x");
}

TEST_F(AppDelegateLinks, ALinkOfMoreThanAMegabyteIsRefused) {
    const std::string longest(AppDelegate::longestLink, 'x');
    EXPECT_TRUE(app.handleGetURL({.urls = {longest}}));
    EXPECT_EQ(refusalOf(longest + "x"), "[WARN] refused a link of 1048577 bytes");
}

TEST_F(AppDelegateLinks, WhatIsGoodInAnEventIsTaken) {
    EXPECT_THAT(launchesFor({"-x", "https://a/", "", "https://b/"}),
                ElementsAre(launchOf("https://a/"), launchOf("https://b/")));
}

TEST_F(AppDelegateLinks, TooManyAtOnceAreRefusedAndTheOthersRouted) {
    fake.browser.launchTakes = 1ms;
    std::size_t taken = 0;
    for (std::size_t i = 0; i < 10'000; ++i) {
        if (app.handleGetURL({.urls = {"https://a/" + std::to_string(i)}})) ++taken;
    }
    EXPECT_EQ(taken, AppDelegate::mostLinksWaiting);
    EXPECT_THAT(newLogLines(), AllOf(SizeIs(10'000 - taken),
                                     Each("[WARN] refused a link: 4096 are waiting already")));
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(fake.calls.count("browser.launch"), taken);
    EXPECT_TRUE(app.handleGetURL({.urls = {"https://a/"}})) << "there is room again";
}

TEST_F(AppDelegateLinks, TooManyInOneEventAreRefusedInOneLine) {
    EXPECT_FALSE(app.handleGetURL({.urls = std::vector<std::string>(4097, "")}));
    EXPECT_THAT(newLogLines(), ElementsAre("[WARN] refused 4097 links at once"));
}

TEST_F(AppDelegateLinks, OneOfOurOwnNeedsNoRoom) {
    fake.browser.launchTakes = 1ms;
    for (std::size_t i = 0; i < AppDelegate::mostLinksWaiting; ++i) {
        app.handleGetURL({.urls = {"https://a/"}});
    }
    EXPECT_TRUE(app.handleGetURL({.urls = {"ferrivane:", "ferrivane:"}}));
    EXPECT_EQ(fake.calls.count("userInterface.showSettings"), 1U) << "once for an event";
}

TEST_F(AppDelegateLinks, LongOnesTakeTheRoomOfMany) {
    const std::string longest(AppDelegate::longestLink, 'x');
    for (int i = 0; i < 16; ++i) EXPECT_TRUE(app.handleGetURL({.urls = {longest}}));
    EXPECT_EQ(refusalOf("https://a/"), "[WARN] refused a link: 16 are waiting already");
}

TEST_F(AppDelegateLinks, OneAfterAnotherInTheOrderOfTheirArrival) {
    fake.browser.launchTakes = 10ms;
    for (int i = 0; i < 500; ++i) {
        app.handleGetURL({.urls = {"https://a/" + std::to_string(i)}, .sender = kMail});
    }
    fake.mainLoop.runUntilIdle();
    const auto calls = fake.calls.of({"browser.launch", "launchLock.release"});
    ASSERT_THAT(calls, SizeIs(1000));
    for (std::size_t i = 0; i < 500; ++i) {
        EXPECT_EQ(calls[2 * i], launchOf("https://a/" + std::to_string(i)));
        EXPECT_THAT(calls[2 * i + 1], StartsWith("launchLock.release"));
    }
}

}  // namespace
}  // namespace ferrivane
