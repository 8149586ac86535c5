// Texts that Chrome would take for a switch of its own never reach it; all others do.
#include <gmock/gmock.h>

#include "tests/app/LauncherTest.h"

namespace ferrivane {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LauncherRefusal : public test::LauncherTest {};

TEST_F(LauncherRefusal, WhatCouldBeASwitchIsNoUrl) {
    const struct {
        const char* name;
        std::string url;
    } rows[] = {
        {"a dash", "-"},
        {"a short switch", "-x"},
        {"a long switch", "--x"},
        {"behind a blank", " -x"},
        {"behind a tab", "\t--x"},
        {"behind a vertical tab", "\v-"},
        {"behind a form feed", "\f-x"},
        {"behind line ends", "\r\n-x"},
        {"behind all of ASCII's white space", " \t\n\v\f\r--renderer-cmd-prefix=touch"},
        {"a switch that holds a link", "--app=https://a/"},
        {"NUL alone", "\0"s},
        {"NUL in the middle", "https://a/\0--x"s},
        {"NUL at the end", "https://a/\0"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(test::linkAlone(row.url)), "error: not a URL: " + row.url) << row.name;
        EXPECT_THAT(fake.calls.texts(), IsEmpty()) << row.name;
    }
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(LauncherRefusal, RefusesAtOnceAlsoWhereNoChromeIsInstalled) {
    fake.applications.locations.clear();
    open(test::linkAlone("-x"));
    EXPECT_THAT(outcomes, ElementsAre("error: not a URL: -x"));
}

TEST_F(LauncherRefusal, NulInWhatGoesWithTheLinkIsRefusedToo) {
    EXPECT_EQ(outcomeOf({.url = kLink, .profileDirectory = "Default\0--x"s}),
              "error: not a URL: https://work.example/a");
    EXPECT_EQ(outcomeOf({.url = kLink, .activationToken = "token\0--x"s}),
              "error: not a URL: https://work.example/a");
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
}

TEST_F(LauncherRefusal, EverythingElseIsPassedOnUnchanged) {
    const struct {
        const char* name;
        std::string url;
    } rows[] = {
        {"a word", "x"},
        {"a dash in the host", "https://-a/"},
        {"a dash behind a blank that ASCII does not know", "\u00A0-x"},
        {"a dash behind an em space", "\u2003-x"},
        {"a dash behind a zero-width space", "\u200B-x"},
        {"a dash behind a next-line control", "\u0085-x"},
        {"a dash behind another control", "\x01-x"},
        {"a dash behind a letter", " a -x"},
        {"a minus sign", "\u2212x"},
        {"an en dash", "\u2013x"},
        {"nothing", ""},
        {"blanks only", " \t\n"},
        {"white space around a link", " https://a/ "},
        {"a line break", "https://a/\n-x"},
        {"bidirectional controls", "https://a/\u202E\u2066x"},
        {"invalid UTF-8", "https://a/\xFF\xC3("},
        {"quotes and shell characters", "https://a/\"'$(x)`;|&"},
        {"a megabyte", "https://a/" + std::string(1'000'000, 'x')},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf({.url = row.url, .profileDirectory = "Default"}),
                  "launched Chrome (pid 500)")
            << row.name;
        EXPECT_THAT(fake.browser.given->switches,
                    ElementsAre("--profile-directory=Default", row.url))
            << row.name;
    }
}

TEST_F(LauncherRefusal, ProfilesMayBeginWithADash) {
    outcomeOf({.url = kLink, .profileDirectory = "-x"});
    EXPECT_THAT(fake.browser.given->switches, ElementsAre("--profile-directory=-x", kLink));
}

}  // namespace
}  // namespace ferrivane
