#include <gmock/gmock.h>

#include "Ferrivane/ProfileSource.h"
#include "Ferrivane/Router.h"
#include "tests/app/HelperTest.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kCopied = R"({"profile":{"info_cache":{"Profile 2":{"name":"Copied"}}}})";

class ProfileSourceTest : public test::HelperTest {
  protected:
    ProfileSourceTest() { writeCatalogue({{"Default", "Direct", {}, {}}}); }

    void load() {
        ProfileSource::load(fake.platform(), [this](const ProfileSource::Profiles& profiles) {
            outcomes.push_back(profiles ? profiles->at(0).name : "error: " + profiles.error());
        });
    }

    std::vector<std::string> outcomes;
};

TEST_F(ProfileSourceTest, OutsideASandboxTheCatalogueIsReadAtOnce) {
    fake.isSandboxed = false;
    installScript();
    load();
    EXPECT_THAT(outcomes, ElementsAre("Direct"));
    writeLocalState("{}");
    load();
    EXPECT_THAT(outcomes, ElementsAre("Direct", "error: no profile.info_cache in " +
                                                    (userData / "Local State").string()));
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
}

TEST_F(ProfileSourceTest, InASandboxTheScriptCopiesItAndTheResultComesLater) {
    installScript();
    copyByScript(kCopied);
    fake.scripts.runTakes = 50ms;
    load();
    fake.mainLoop.advance(49ms);
    EXPECT_THAT(outcomes, IsEmpty());
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(outcomes, ElementsAre("Copied"));
    EXPECT_TRUE(nothingTemporary());
}

TEST_F(ProfileSourceTest, AnErrorOfTheSandboxComesLaterToo) {
    load();
    EXPECT_THAT(outcomes, IsEmpty());
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(outcomes,
                ElementsAre("error: helper script is not installed at " + installed.string()));
}

class RouterSandbox : public ProfileSourceTest {
  protected:
    std::vector<std::string> logOf(const std::string& url) {
        Router router(fake.platform(), log, rulesFile);
        std::vector<bool> opened;
        router.route(url, std::nullopt, std::nullopt, [&](bool it) { opened.push_back(it); });
        fake.mainLoop.runUntilIdle();
        EXPECT_THAT(opened, SizeIs(1));
        return newLogLines();
    }
};

TEST_F(RouterSandbox, ProfileIsTakenFromTheCopy) {
    installScript();
    copyByScript(kCopied);
    writeRules(R"({"defaultProfile": "copied"})");
    EXPECT_THAT(logOf("https://a/"),
                ElementsAre("[INFO] https://a/… from unknown app → Copied [Profile 2] via default",
                            "[INFO]   launched Chrome through the helper script (100 ms)"));
    EXPECT_THAT(fake.calls.of({"scripts.run"}), SizeIs(2));
}

TEST_F(RouterSandbox, WithoutAScriptTheLinkOpensAllTheSame) {
    writeRules("{}");
    EXPECT_THAT(
        logOf("https://a/"),
        ElementsAre("[ERROR] cannot read Chrome profiles: helper script is not installed at " +
                        installed.string(),
                    "[INFO] https://a/… from unknown app → Default [Default] via default",
                    "[WARN] helper script not installed; opening in Chrome without a profile",
                    "[INFO]   opened in Chrome (pid 500) without a profile — helper script missing "
                    "(0 ms)"));
    EXPECT_THAT(fake.calls.of({"browser.openLink"}),
                ElementsAre("browser.openLink /apps/google-chrome.desktop [https://a/]"));
}

TEST_F(RouterSandbox, FailureOfTheScriptIsShown) {
    installScript();
    fake.scripts.ran = std::unexpected(PlatformError{"the helper script ended with status 1"});
    writeRules("{}");
    EXPECT_THAT(
        logOf("https://a/b"),
        ElementsAre("[ERROR] cannot read Chrome profiles: the helper script ended with status 1",
                    "[INFO] https://a/… from unknown app → Default [Default] via default",
                    "[ERROR]   Chrome launch failed: the helper script ended with status 1"));
    ASSERT_THAT(fake.dialogs.alerts, SizeIs(1));
    EXPECT_EQ(fake.dialogs.alerts[0].informativeText,
              "the helper script ended with status 1\n\nhttps://a/b");
}

}  // namespace
}  // namespace ferrivane
