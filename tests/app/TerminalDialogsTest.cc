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

TEST(TerminalDialogs, NoTerminalObeysALink) {
    const LaunchError quoting{LaunchError::Kind::platform, "cannot open https://a/\x1B]0;x\a"};
    EXPECT_EQ(shown("https://a/\x1B]0;x\a", quoting, true),
              "Couldn't open the link in Google Chrome: cannot open https://a/\\x1B]0;x\\x07\n"
              "https://a/\\x1B]0;x\\x07\n");
    const struct {
        const char* name;
        const char* url;
        const char* text;
    } rows[] = {
        {"a line that was not written here", "x:\nforged", "x:\\x0Aforged"},
        {"a blank line's worth of returns", "x:\r\t\v", "x:\\x0D\\x09\\x0B"},
        {"delete", "x:\x7F", "x:\\x7F"},
        {"a control sequence in one character",
         "x:\xC2\x9B"
         "2J",
         "x:\\xC2\\x9B"
         "2J"},
        {"the same as one byte, which is no UTF-8",
         "x:\x9B"
         "2J",
         "x:\xEF\xBF\xBD"
         "2J"},
        {"letters and no-break space", "x:\xC2\xA0\xC3\x9B\xE2\x82\x9B",
         "x:\xC2\xA0\xC3\x9B\xE2\x82\x9B"},
    };
    for (const auto& row : rows) {
        const std::string title = "Couldn't open the link in Google Chrome: ";
        EXPECT_EQ(shown(row.url, {}, false),
                  title + "Google Chrome is not installed\n" + row.text + "\n")
            << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
