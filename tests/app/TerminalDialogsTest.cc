#include <sstream>

#include <gtest/gtest.h>

#include "Ferrivane/Router.h"
#include "Ferrivane/TerminalDialogs.h"

namespace ferrivane {
namespace {

using ChromeLauncher::LaunchError;

std::string shown(const std::string& url, const LaunchError& error, bool isTerminal) {
    std::ostringstream stream;
    TerminalDialogs(stream, isTerminal).showLaunchFailure(launchFailureAlert(url, error));
    return stream.str();
}

TEST(TerminalDialogs, LinkIsShownInFullToAPersonOnly) {
    const LaunchError notInstalled;
    const LaunchError refused{LaunchError::Kind::malformedURL, "-https://user:pw@a/secret"};
    const LaunchError quoting{LaunchError::Kind::platform, "cannot open https://a/secret"};
    const struct {
        const char* name;
        const char* url;
        LaunchError error;
        bool isTerminal;
        const char* text;
    } rows[] = {
        {"a person", "https://a/secret", notInstalled, true,
         "Couldn't open the link in Google Chrome: Google Chrome is not installed\n"
         "https://a/secret\n"},
        {"somebody's log", "https://a/secret", notInstalled, false,
         "Couldn't open the link in Google Chrome: Google Chrome is not installed\n"
         "https://a/…\n"},
        {"a reason that ends in the link, to a person", "https://a/secret", quoting, true,
         "Couldn't open the link in Google Chrome: cannot open https://a/secret\n"
         "https://a/secret\n"},
        {"a reason that ends in the link, to a log", "https://a/secret", quoting, false,
         "Couldn't open the link in Google Chrome: cannot open https://a/…\n"
         "https://a/…\n"},
        {"a refused link, to a log", "-https://user:pw@a/secret", refused, false,
         "Couldn't open the link in Google Chrome: not a URL: -https://user:pw@a/secre…\n"
         "-https://user:pw@a/secre…\n"},
        {"no link", "", notInstalled, false,
         "Couldn't open the link in Google Chrome: Google Chrome is not installed\n\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(shown(row.url, row.error, row.isTerminal), row.text) << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
