#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include "Ferrivane/LinkQueue.h"
#include "tests/app/AppTest.h"
#include "tests/support/Child.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class LinkQueueTest : public test::AppTest {
  protected:
    LinkQueueTest() { writeRules("{}"); }

    void add(const std::string& url) {
        queue.add({url, {}, {}}, [this, url](bool opened) {
            happened.push_back(url + (opened ? " opened" : " failed"));
        });
    }

    LinkQueue queue{fake.platform(), log, rulesFile};
    std::vector<std::string> happened;
};

TEST_F(LinkQueueTest, NothingIsDoneBeforeAddReturns) {
    add("https://a/");
    EXPECT_TRUE(fake.calls.empty());
    EXPECT_EQ(queue.count(), 1U);
    EXPECT_EQ(queue.bytes(), 10U);
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(happened, ElementsAre("https://a/ opened"));
    EXPECT_EQ(queue.count(), 0U);
    EXPECT_EQ(queue.bytes(), 0U);
}

TEST_F(LinkQueueTest, TheNextStartsWhenTheOneBeforeIsOver) {
    fake.browser.launchTakes = 100ms;
    add("https://a/");
    add("-x");
    add("https://b/");
    fake.mainLoop.advance(50ms);
    EXPECT_EQ(queue.count(), 2U);
    EXPECT_EQ(fake.calls.count("browser.launch"), 1U);
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(happened, ElementsAre("https://a/ opened", "-x failed", "https://b/ opened"));
}

TEST_F(LinkQueueTest, TheBrowserIsLookedForAnewBeforeEachLink) {
    add("https://a/");
    add("https://b/");
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(fake.calls.of({"browser.l"}),
                ElementsAre("browser.locate",
                            "browser.launch /apps/google-chrome.desktop "
                            "[--profile-directory=Default] [https://a/]",
                            "browser.locate",
                            "browser.launch /apps/google-chrome.desktop "
                            "[--profile-directory=Default] [https://b/]"));
}

TEST_F(LinkQueueTest, AChangeOfTheRulesCountsForLinksThatWait) {
    fake.browser.launchTakes = 100ms;
    add("https://a/");
    add("https://b/");
    fake.mainLoop.advance(50ms);
    writeRules(R"({"defaultProfile": "Profile 7"})");
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(fake.calls.of({"browser.launch"}).back(),
                ::testing::HasSubstr("--profile-directory=Profile 7"));
}

TEST_F(LinkQueueTest, IdleIsWhenTheLastLinkIsOver) {
    fake.browser.launchTakes = 100ms;
    add("https://a/");
    queue.whenIdle([this] { happened.emplace_back("idle"); });
    add("https://b/");
    EXPECT_TRUE(happened.empty());
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(happened, ElementsAre("https://a/ opened", "https://b/ opened", "idle"));
    queue.whenIdle([this] { happened.emplace_back("idle again"); });
    EXPECT_EQ(happened.size(), 3U) << "never before it returns";
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(happened.back(), "idle again");
    add("https://c/");
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(happened.back(), "https://c/ opened") << "told once";
}

// Too few for a link, enough for the sanitizers, which look into memory through a pipe. Only for
// children.
rlimit leaveFewDescriptors() {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    rlimit few = before;
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    few.rlim_cur = static_cast<rlim_t>(next) + 3;
    ::close(next);
    ::setrlimit(RLIMIT_NOFILE, &few);
    return before;
}

TEST_F(LinkQueueTest, EachLackOfDescriptorsIsWaitedFor) {
    EXPECT_EQ(test::inChild([&]() -> std::string {
                  leaveFewDescriptors();
                  add("https://a/");
                  fake.mainLoop.advance(11s);
                  if (happened.size() != 1) return "the first still waits";
                  fake.mainLoop.advance(3600s);
                  add("https://b/");
                  fake.mainLoop.advance(9900ms);
                  if (happened.size() != 1) return "the second did not wait";
                  fake.mainLoop.advance(200ms);
                  return happened.back();
              }),
              "https://b/ opened");
}

TEST_F(LinkQueueTest, ALinkWaitsForDescriptorsForTenSeconds) {
    for (const bool comeBack : {true, false}) {
        EXPECT_EQ(test::inChild([&]() -> std::string {
                      const rlimit before = leaveFewDescriptors();
                      add("https://a/");
                      fake.mainLoop.advance(9900ms);
                      if (!happened.empty() || !fake.calls.empty()) return "did not wait";
                      if (comeBack) ::setrlimit(RLIMIT_NOFILE, &before);
                      fake.mainLoop.advance(200ms);
                      return happened.empty() ? "still waits" : happened.front();
                  }),
                  "https://a/ opened");
    }
}

}  // namespace
}  // namespace ferrivane
