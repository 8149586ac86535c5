#include <gmock/gmock.h>

#include "Ferrivane/DefaultBrowser.h"
#include "tests/support/FakePlatform.h"

namespace ferrivane {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

const std::filesystem::path kOwn = "/apps/own.desktop";
const std::filesystem::path kOther = "/apps/other.desktop";

class DefaultBrowserTest : public ::testing::Test {
  protected:
    DefaultBrowserTest() { fake.applications.identifiers = {{kOwn, "own"}, {kOther, "other"}}; }

    // Absent while the completion has not been called.
    std::optional<DefaultBrowser::Failures> failures;
    int completions = 0;

    void make(const std::filesystem::path& application) {
        DefaultBrowser::make(fake.applications, application, [this](const auto& result) {
            failures = result;
            ++completions;
            fake.calls.add("done");
        });
    }
    std::vector<std::string> requests() const {
        return fake.calls.of({"applications.setHandler", "done"});
    }

    test::FakePlatform fake;
};

TEST_F(DefaultBrowserTest, SchemesAreThoseOfTheWebInTheirOrder) {
    EXPECT_THAT(DefaultBrowser::schemes, ElementsAre("http", "https"));
    EXPECT_EQ(DefaultBrowser::sampleLink("https"), "https://example.com");
    EXPECT_EQ(DefaultBrowser::sampleLink("http"), "http://example.com");
}

TEST_F(DefaultBrowserTest, HandlerIsTheOneOfTheScheme) {
    fake.applications.handlers = {{"http", kOther}};
    EXPECT_EQ(DefaultBrowser::handler(fake.applications, "http"), kOther);
    EXPECT_EQ(DefaultBrowser::handler(fake.applications, "https"), std::nullopt);
}

TEST_F(DefaultBrowserTest, IsDefaultWhenItsIdentifierHandlesEveryScheme) {
    fake.applications.identifiers["/elsewhere/own.desktop"] = "own";
    fake.applications.identifiers["/apps/Own.desktop"] = "Own";
    const struct {
        const char* name;
        std::filesystem::path application;
        std::map<std::string, std::filesystem::path, std::less<>> handlers;
        bool expected;
    } rows[] = {
        {"both", kOwn, {{"http", kOwn}, {"https", kOwn}}, true},
        {"a copy elsewhere", kOwn, {{"http", kOwn}, {"https", "/elsewhere/own.desktop"}}, true},
        {"http only", kOwn, {{"http", kOwn}, {"https", kOther}}, false},
        {"https only", kOwn, {{"http", kOther}, {"https", kOwn}}, false},
        {"no handler of https", kOwn, {{"http", kOwn}}, false},
        {"no handler of http", kOwn, {{"https", kOwn}}, false},
        {"no handler at all", kOwn, {}, false},
        {"a handler without an identifier", kOwn, {{"http", kOwn}, {"https", "/x"}}, false},
        {"another case", kOwn, {{"http", kOwn}, {"https", "/apps/Own.desktop"}}, false},
        {"no identifier of its own", "/x", {{"http", kOwn}, {"https", kOwn}}, false},
        {"no identifiers anywhere", "/x", {{"http", "/x"}, {"https", "/x"}}, false},
    };
    for (const auto& row : rows) {
        fake.applications.handlers = row.handlers;
        EXPECT_EQ(DefaultBrowser::isDefault(fake.applications, row.application), row.expected)
            << row.name;
    }
}

TEST_F(DefaultBrowserTest, EverySchemeIsAskedForInOrder) {
    fake.applications.handlers = {{"http", kOther}};
    make(kOwn);
    EXPECT_THAT(failures, ::testing::Optional(IsEmpty()));
    EXPECT_THAT(requests(), ElementsAre("applications.setHandler http /apps/own.desktop",
                                        "applications.setHandler https /apps/own.desktop", "done"));
    EXPECT_THAT(fake.applications.handlers, ElementsAre(Pair("http", kOwn), Pair("https", kOwn)));
}

TEST_F(DefaultBrowserTest, SchemeThatItHandlesIsNotAskedFor) {
    fake.applications.handlers = {{"http", kOwn}, {"https", kOther}};
    make(kOwn);
    EXPECT_THAT(requests(), ElementsAre("applications.setHandler https /apps/own.desktop", "done"));
    fake.calls.clear();
    fake.applications.handlers = {{"http", kOther}, {"https", kOwn}};
    make(kOwn);
    EXPECT_THAT(requests(), ElementsAre("applications.setHandler http /apps/own.desktop", "done"));
    fake.calls.clear();
    make(kOwn);
    EXPECT_THAT(requests(), ElementsAre("done"));
    EXPECT_THAT(failures, ::testing::Optional(IsEmpty()));
}

TEST_F(DefaultBrowserTest, ApplicationWithoutAnIdentifierIsAlwaysAskedFor) {
    fake.applications.handlers = {{"http", "/y"}};
    make("/x");
    EXPECT_THAT(requests(), ElementsAre("applications.setHandler http /x",
                                        "applications.setHandler https /x", "done"));
}

TEST_F(DefaultBrowserTest, NextSchemeWaitsForTheAnswerToTheOneBefore) {
    fake.applications.setHandlerTakes = 300ms;
    make(kOwn);
    EXPECT_THAT(requests(), ElementsAre("applications.setHandler http /apps/own.desktop"));
    EXPECT_EQ(failures, std::nullopt);
    fake.mainLoop.advance(299ms);
    EXPECT_EQ(requests().size(), 1U);
    fake.mainLoop.runUntilIdle();
    fake.calls.add("end");
    EXPECT_THAT(fake.calls.timedTexts(),
                ::testing::IsSupersetOf({"0 ms: applications.setHandler http /apps/own.desktop",
                                         "300 ms: applications.setHandler https /apps/own.desktop",
                                         "600 ms: done"}));
    EXPECT_EQ(completions, 1);
}

TEST_F(DefaultBrowserTest, RefusalIsKeptAndTheOtherSchemeIsAskedForAllTheSame) {
    fake.applications.refusals = {{"http", {"the person said no"}}};
    make(kOwn);
    EXPECT_THAT(failures, ::testing::Optional(
                              ElementsAre(Pair("http", PlatformError{"the person said no"}))));
    EXPECT_THAT(requests(), ElementsAre("applications.setHandler http /apps/own.desktop",
                                        "applications.setHandler https /apps/own.desktop", "done"));
    EXPECT_THAT(fake.applications.handlers, ElementsAre(Pair("https", kOwn)));
}

TEST_F(DefaultBrowserTest, RefusalsAreKeptByScheme) {
    fake.applications.setHandlerTakes = 1s;
    fake.applications.refusals = {{"http", {"one"}}, {"https", {"two"}}};
    make(kOwn);
    fake.mainLoop.runUntilIdle();
    EXPECT_THAT(failures, ::testing::Optional(ElementsAre(Pair("http", PlatformError{"one"}),
                                                          Pair("https", PlatformError{"two"}))));
    EXPECT_EQ(completions, 1);
}

TEST_F(DefaultBrowserTest, DesktopThatKeepsTheOldHandlerHasRefusedNothing) {
    fake.applications.handlers = {{"http", kOther}, {"https", kOther}};
    fake.applications.deafSchemes = {"http", "https"};
    make(kOwn);
    EXPECT_THAT(failures, ::testing::Optional(IsEmpty()));
    EXPECT_FALSE(DefaultBrowser::isDefault(fake.applications, kOwn));
}

}  // namespace
}  // namespace ferrivane
