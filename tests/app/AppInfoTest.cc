// The program's facts about itself and about the default browser.
#include <gmock/gmock.h>

#include "Ferrivane/AppInfo.h"
#include "Ferrivane/DefaultBrowser.h"
#include "tests/support/FakePlatform.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;

TEST(AppInfo, VersionAndInstallationComeFromTheBundle) {
    const struct {
        const char* name;
        Applications::Bundle bundle;
        const char* version;
        bool isBundled;
    } rows[] = {
        {"bare executable", {{}, {}}, "dev", false},
        {"bare executable that knows its version", {{}, "1.2.3"}, "1.2.3", false},
        {"installed", {"com.hollowmere.ferrivane", "1.2.3"}, "1.2.3", true},
        {"installed without a version", {"com.hollowmere.ferrivane", {}}, "dev", true},
        {"somebody else's bundle", {"com.hollowmere.other", "1"}, "1", false},
        {"identifier in other letters", {"com.hollowmere.Ferrivane", "1"}, "1", false},
    };
    test::FakePlatform fake;
    for (const auto& row : rows) {
        fake.applications.bundle = row.bundle;
        EXPECT_EQ(AppInfo::version(fake.applications), row.version) << row.name;
        EXPECT_EQ(AppInfo::isBundled(fake.applications), row.isBundled) << row.name;
    }
}

TEST(AppInfo, IdentifierAndSchemeAreTheOnesTheDesktopKnows) {
    EXPECT_EQ(AppInfo::bundleIdentifier, "com.hollowmere.ferrivane");
    EXPECT_EQ(AppInfo::urlScheme, "ferrivane");
}

TEST(DefaultBrowser, HandlerIsWhoeverTheDesktopNamesForTheScheme) {
    test::FakePlatform fake;
    fake.applications.handlers.emplace("http", "/apps/a.desktop");
    EXPECT_EQ(DefaultBrowser::handler(fake.applications, "http"), "/apps/a.desktop");
    EXPECT_EQ(DefaultBrowser::handler(fake.applications, "https"), std::nullopt);
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("applications.handler http", "applications.handler https"));
}

TEST(DefaultBrowser, WebSchemesAreTwoInThisOrder) {
    EXPECT_THAT(DefaultBrowser::schemes, ElementsAre("http", "https"));
}

}  // namespace
}  // namespace ferrivane
