// What a program leaves to the newer one that takes its place.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "Ferrivane/Router.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Restart.h"
#include "tests/linux/Program.h"

namespace ferrivane {
namespace {

constexpr const char* kVariable = "FERRIVANE_ALERTS";

// The links and reasons that are read from such a file.
std::vector<std::pair<std::string, std::string>> taken(std::string_view contents) {
    const int file = ::memfd_create("alerts", 0);
    EXPECT_EQ(::write(file, contents.data(), contents.size()),
              static_cast<ssize_t>(contents.size()));
    const test::ScopedVariable variable(kVariable, std::to_string(file));
    std::vector<std::pair<std::string, std::string>> alerts;
    for (const LaunchFailureAlert& alert : Restart::takeAlerts()) {
        alerts.emplace_back(alert.link, alert.reason);
    }
    EXPECT_EQ(environment(kVariable), "") << "no program of ours finds it again";
    EXPECT_EQ(::fcntl(file, F_GETFD), -1) << "closed";
    return alerts;
}

TEST(RestartTest, AlertsComeAlongInTheirOrder) {
    using namespace std::string_literals;
    using namespace std::string_view_literals;
    using Alerts = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(taken(""), Alerts());
    EXPECT_EQ(taken("not installed\0https://a/\nb\0ü\0\0"sv),
              (Alerts{{"https://a/\nb", "not installed"}, {"", "ü"}}));
    EXPECT_EQ(taken("one\0https://a/\0cut"sv), (Alerts{{"https://a/", "one"}}));
    EXPECT_EQ(taken("cut\0too"sv), Alerts());
    const std::string longLink(1'000'000, 'x');
    EXPECT_EQ(taken("r\0"s + longLink + '\0'), (Alerts{{longLink, "r"}}));
}

TEST(RestartTest, TheyAreTheSameAlerts) {
    const int file = ::memfd_create("alerts", 0);
    constexpr std::string_view kContents("not installed\0https://a/\0", 25);
    ASSERT_EQ(::write(file, kContents.data(), kContents.size()), 25);
    const test::ScopedVariable variable(kVariable, std::to_string(file));
    const auto alerts = Restart::takeAlerts();
    ASSERT_EQ(alerts.size(), 1U);
    const auto expected = launchFailureAlert(
        "https://a/", {ChromeLauncher::LaunchError::Kind::platform, "not installed"});
    EXPECT_EQ(alerts[0].title, expected.title);
    EXPECT_EQ(alerts[0].informativeText, expected.informativeText);
    EXPECT_EQ(alerts[0].buttons, expected.buttons);
}

TEST(RestartTest, AVariableThatNamesNoFileOfOursIsIgnored) {
    for (const char* value : {"", "-1", "0", "1", "2", "none", "65000"}) {
        const test::ScopedVariable variable(kVariable, value);
        EXPECT_TRUE(Restart::takeAlerts().empty()) << value;
    }
    EXPECT_NE(::fcntl(STDERR_FILENO, F_GETFD), -1) << "standard streams stay open";
}

TEST(RestartTest, NothingIsDueWhileTheProgramIsTheInstalledOne) {
    EXPECT_FALSE(Restart::isDue());
}

}  // namespace
}  // namespace ferrivane
