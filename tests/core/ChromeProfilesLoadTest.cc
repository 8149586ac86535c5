#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/ChromeProfiles.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::outcomeOf;
using test::writeText;

class ChromeProfilesLoad : public ::testing::Test {
  protected:
    auto load(std::string_view text) const {
        writeText(file, text);
        return ChromeProfiles::load(file);
    }
    // "directory|name|email|domain" of each profile of a catalogue with this info_cache.
    std::vector<std::string> profilesOf(const std::string& cache) const {
        const auto profiles = load(R"({"profile": {"info_cache": )" + cache + "}}");
        EXPECT_EQ(outcomeOf(profiles), "ok") << cache;
        std::vector<std::string> texts;
        for (const ChromeProfile& p : profiles.value_or(std::vector<ChromeProfile>())) {
            texts.push_back(p.directory + "|" + p.name + "|" + p.email.value_or("-") + "|" +
                            p.hostedDomain.value_or("-"));
        }
        return texts;
    }

    const test::TempDir dir;
    const std::filesystem::path file = dir / "Local State";
};
using Texts = std::vector<std::string>;

TEST_F(ChromeProfilesLoad, ReadsNameAccountAndDomain) {
    const struct {
        const char* name;
        const char* entry;
        const char* text;
    } rows[] = {
        {"everything", R"({"name": "Work", "user_name": "me@a.b", "hosted_domain": "a.b"})",
         "P|Work|me@a.b|a.b"},
        {"empty name, account, no domain",
         R"({"name": "", "user_name": "me@a.b", "hosted_domain": "NO_HOSTED_DOMAIN"})",
         "P|P|me@a.b|-"},
        {"nothing", "{}", "P|P|-|-"},
        {"empty texts", R"({"name": "", "user_name": "", "hosted_domain": ""})", "P|P|-|-"},
        {"other case of no domain", R"({"hosted_domain": "no_hosted_domain"})",
         "P|P|-|no_hosted_domain"},
        {"more than no domain", R"({"hosted_domain": "NO_HOSTED_DOMAIN "})",
         "P|P|-|NO_HOSTED_DOMAIN "},
        {"wrong types", R"({"name": 5, "user_name": {}, "hosted_domain": [true]})", "P|P|-|-"},
        {"nulls", R"({"name": null, "user_name": null, "hosted_domain": null})", "P|P|-|-"},
        {"blanks are kept", R"({"name": "  ", "user_name": " x "})", "P|  | x |-"},
        {"escapes and letters beyond ASCII", R"({"name": "\u00dcber \"😀\""})",
         "P|Über \"😀\"|-|-"},
        {"other keys", R"({"gaia_name": "G", "is_managed": 1, "name": "N", "x": {"name": "X"}})",
         "P|N|-|-"},
        {"of equal keys the last",
         R"({"name": "A", "name": "B", "user_name": "a", "user_name": 3})", "P|B|-|-"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(profilesOf(std::string("{\"P\": ") + row.entry + "}"), Texts{row.text})
            << row.name;
    }
}

TEST_F(ChromeProfilesLoad, SortsByDirectoryAsText) {
    EXPECT_EQ(profilesOf(R"({"Profile 10": {}, "Default": {}, "Profile 2": {}, "Profile 1": {},
                             "b": {}, "A": {}, "é": {}, "😀": {}, "\uffee": {}, "": {}})"),
              (Texts{"||-|-", "A|A|-|-", "Default|Default|-|-", "Profile 1|Profile 1|-|-",
                     "Profile 10|Profile 10|-|-", "Profile 2|Profile 2|-|-", "b|b|-|-", "é|é|-|-",
                     "\uFFEE|\uFFEE|-|-", "😀|😀|-|-"}));
}

TEST_F(ChromeProfilesLoad, SkipsEntriesThatAreNoObjects) {
    EXPECT_EQ(profilesOf(R"({"a": 1, "b": null, "c": [], "d": "t", "e": {}, "f": true})"),
              Texts{"e|e|-|-"});
    EXPECT_EQ(profilesOf("{}"), Texts());
    EXPECT_EQ(profilesOf(R"({"a": 1})"), Texts());
}

TEST_F(ChromeProfilesLoad, OfEqualDirectoriesTheLastOneCounts) {
    EXPECT_EQ(profilesOf(R"({"a": {"name": "1"}, "b": {}, "a": {"name": "2"}})"),
              (Texts{"a|2|-|-", "b|b|-|-"}));
    EXPECT_EQ(profilesOf(R"({"a": {"name": "1"}, "a": {"name": "2"}, "a": 3})"), Texts());
    EXPECT_EQ(outcomeOf(load(R"({"profile": [], "profile": {"info_cache": 1, "info_cache": {}}})")),
              "ok");
}

TEST_F(ChromeProfilesLoad, KeepsHostileDirectoriesUnchanged) {
    EXPECT_EQ(profilesOf(R"({"/etc": {}, "..": {}, "../x": {}, "Default/": {}, "--x": {}, " a ": {},
                             "a\u0000b": {}, "a\nb": {}})"),
              (Texts{" a | a |-|-", "--x|--x|-|-", "..|..|-|-", "../x|../x|-|-", "/etc|/etc|-|-",
                     "Default/|Default/|-|-", std::string("a\0b|a\0b|-|-", 11), "a\nb|a\nb|-|-"}));
}

TEST_F(ChromeProfilesLoad, AnythingWithoutAnInfoCacheIsMalformed) {
    for (const char* text : {
             "[]",
             "3",
             "null",
             "\"text\"",
             "{}",
             R"({"profile": []})",
             R"({"profile": null})",
             R"({"profile": {}})",
             R"({"profile": {"info_cache": []}})",
             R"({"profile": {"info_cache": null}})",
             R"({"profile": {"info_cache": "x"}})",
             R"({"Profile": {"info_cache": {}}})",
             R"({"info_cache": {}})",
         }) {
        const auto profiles = load(text);
        ASSERT_FALSE(profiles) << text;
        EXPECT_EQ(profiles.error().kind, ChromeProfiles::LoadError::Kind::malformed);
        EXPECT_EQ(profiles.error().description(), "no profile.info_cache in " + file.string());
    }
}

TEST_F(ChromeProfilesLoad, WhatIsNotJsonIsRejectedWhole) {
    const std::string good = R"({"profile": {"info_cache": {"a": {}}}})";
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    for (const std::string& text : {
             std::string(),
             std::string("  "),
             std::string("nonsense"),
             good + "x",
             good + good,
             good.substr(0, good.size() - 1),
             "[" + good,
             "\xEF\xBB\xBF" + good,
             "{\"x\": \"\xFF\", " + good.substr(1),
             "{\"x\": \"\\ud800\", " + good.substr(1),
             "{\"x\": 1e400, " + good.substr(1),
             "{\"x\": " + deep + ", " + good.substr(1),
             "{\"x\": 123456789012345678901234567890, " + good.substr(1),
             std::string("\xFF\xFE{\0}\0", 6),
         }) {
        const auto profiles = load(text);
        ASSERT_FALSE(profiles) << text.substr(0, 100);
        EXPECT_EQ(profiles.error().kind, ChromeProfiles::LoadError::Kind::notJson);
        EXPECT_TRUE(profiles.error().description().starts_with("not JSON: "));
        EXPECT_GT(profiles.error().description().size(), 12U);
    }
    EXPECT_EQ(outcomeOf(load(good)), "ok") << "a fault leaves nothing behind";
}

TEST_F(ChromeProfilesLoad, WhatCannotBeReadIsNamedAsTheSystemNamesIt) {
    std::filesystem::create_directory(dir / "folder");
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    writeText(file, "");
    const struct {
        std::filesystem::path path;
        const char* description;
    } rows[] = {
        {dir / "none", "open failed: No such file or directory"},
        {file / "x", "open failed: Not a directory"},
        {dir / "folder", "read failed: Is a directory"},
        {dir / "pipe", "read failed: Invalid argument"},
    };
    for (const auto& row : rows) {
        const auto profiles = ChromeProfiles::load(row.path);
        EXPECT_EQ(outcomeOf(profiles), row.description);
        EXPECT_EQ(profiles.error().kind, ChromeProfiles::LoadError::Kind::unreadable);
        EXPECT_EQ(profiles.error().path, row.path);
    }
    test::setMode(file, 0);
    test::setMode(dir.path(), 0755);
    EXPECT_EQ(test::inChild([&] {
                  test::becomeUnprivileged();
                  return outcomeOf(ChromeProfiles::load(file));
              }),
              "open failed: Permission denied");
}

TEST_F(ChromeProfilesLoad, NeverFailsWhileChromeReplacesTheFile) {
    // Catalogues of different lengths, each the answer that a reader may get.
    constexpr int kVersions = 20;
    std::vector<std::string> texts;
    std::string cache;
    for (int i = 0; i < kVersions; ++i) {
        cache += std::string(i == 0 ? "" : ",") + "\"" + std::to_string(i) + "\": {\"name\": \"" +
                 std::string(static_cast<std::size_t>(i) * 500, 'n') + "\"}";
        texts.push_back(R"({"profile": {"info_cache": {)" + cache + "}}}");
    }
    writeText(file, texts[0]);
    std::atomic<bool> running = true;
    std::thread chrome([&] {
        for (std::size_t i = 0; running; ++i) {
            writeText(dir / "next", texts[i % kVersions]);
            std::filesystem::rename(dir / "next", file);
        }
    });
    int failures = 0;
    for (int i = 0; i < 1000; ++i) {
        const auto profiles = ChromeProfiles::load(file);
        if (!profiles || profiles->empty() || profiles->size() > kVersions) ++failures;
    }
    running = false;
    chrome.join();
    EXPECT_EQ(failures, 0);
}

TEST_F(ChromeProfilesLoad, ManyProfilesAndSeveralThreads) {
    std::string cache = "{";
    for (int i = 0; i < 10'000; ++i) {
        cache += std::string(i == 0 ? "" : ",") + "\"Profile " + std::to_string(i) +
                 R"(": {"name": "n", "user_name": "u", "avatar": "a long enough text"})";
    }
    writeText(file, R"({"profile": {"info_cache": )" + cache + "}}}");
    std::atomic<int> right = 0;
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            const auto profiles = ChromeProfiles::load(file);
            if (profiles && profiles->size() == 10'000 &&
                std::ranges::is_sorted(*profiles, {}, &ChromeProfile::directory)) {
                ++right;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 4);
}

}  // namespace
}  // namespace ferrivane
