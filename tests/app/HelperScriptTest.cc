#include <gmock/gmock.h>

#include "Ferrivane/HelperScript.h"
#include "tests/app/HelperTest.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

using HelperScript::HelperError;
using HelperScript::State;

class HelperScriptTest : public test::HelperTest {
  protected:
    State state() { return HelperScript::state(fake.platform()); }

    // The outcome of running the installed script: "done", or the description.
    std::string outcomeOfRun(const std::vector<std::string>& arguments) {
        std::vector<std::string> outcomes;
        HelperScript::run(fake.platform(), arguments, "tok", [&](const auto& result) {
            outcomes.push_back(result ? "done" : result.error().description());
        });
        fake.mainLoop.runUntilIdle();
        EXPECT_EQ(outcomes.size(), 1U);
        return outcomes.empty() ? "no outcome" : outcomes.front();
    }

    // The names of the profiles, or the description.
    std::string outcomeOfLoading() {
        std::vector<std::string> outcomes;
        HelperScript::loadProfiles(fake.platform(), [&](const HelperScript::Profiles& profiles) {
            std::string names = profiles ? "" : profiles.error().description();
            for (const auto& profile : profiles.value_or(std::vector<ChromeProfile>())) {
                names += profile.name + ";";
            }
            outcomes.push_back(names);
        });
        fake.mainLoop.runUntilIdle();
        EXPECT_EQ(outcomes.size(), 1U);
        return outcomes.empty() ? "no outcome" : outcomes.front();
    }
};

TEST_F(HelperScriptTest, ErrorsSayWhatIsWrong) {
    using Kind = HelperError::Kind;
    const struct {
        const char* name;
        HelperError error;
        const char* description;
    } rows[] = {
        {"not installed",
         {Kind::notInstalled, "/a b/x.sh"},
         "helper script is not installed at /a b/x.sh"},
        {"another folder on macOS",
         {Kind::wrongFolder, "/home/me/Desktop", Desktop::macOS},
         "choose the Application Scripts folder, not Desktop"},
        {"another folder elsewhere",
         {Kind::wrongFolder, "/home/me/My Desktop", Desktop::freedesktop},
         "choose the scripts folder, not My Desktop"},
        {"no script in the build",
         {Kind::noBundledScript},
         "this build has no bundled helper script"},
        {"cancelled", {Kind::cancelled}, "installation cancelled"},
        {"the system's words",
         {Kind::platform, "copy failed: No space left on device"},
         "copy failed: No space left on device"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.error.description(), row.description) << row.name;
}

TEST_F(HelperScriptTest, NotNeededOutsideASandboxEvenWhenInstalled) {
    installScript();
    fake.isSandboxed = false;
    EXPECT_EQ(state(), State::notNeeded);
    EXPECT_TRUE(HelperScript::isInstalled(fake.platform()));
}

TEST_F(HelperScriptTest, StateIsThatOfTheFiles) {
    const struct {
        const char* name;
        std::function<void()> prepare;
        State state;
    } rows[] = {
        {"no folder known", [&] { fake.scripts.folder.reset(); }, State::missing},
        {"no folder there", [&] { fake.scripts.folder = dir / "nowhere"; }, State::missing},
        {"no script", [] {}, State::missing},
        {"a script that may not be executed",
         [&] {
             installScript();
             std::filesystem::permissions(installed, std::filesystem::perms::owner_read);
         },
         State::missing},
        {"a folder of this name", [&] { std::filesystem::create_directory(installed); },
         State::missing},
        {"the bundled script", [&] { installScript(); }, State::ready},
        {"one line break more", [&] { installScript(std::string(kScript) + "\n"); },
         State::outdated},
        {"one byte less", [&] { installScript(kScript.substr(1)); }, State::outdated},
        {"a NUL more", [&] { installScript(std::string(kScript) + '\0'); }, State::outdated},
        {"a script without a bundled one",
         [&] {
             installScript();
             fake.scripts.bundled.reset();
         },
         State::outdated},
        {"a script and a bundled one that is gone",
         [&] {
             installScript();
             fake.scripts.bundled = dir / "gone";
         },
         State::outdated},
    };
    for (const auto& row : rows) {
        std::filesystem::remove_all(installed);
        fake.scripts.folder = scripts;
        fake.scripts.bundled = bundled;
        row.prepare();
        EXPECT_EQ(state(), row.state) << row.name;
    }
}

TEST_F(HelperScriptTest, StateIsFoundOutAnewEachTime) {
    installScript("old");
    EXPECT_EQ(state(), State::outdated);
    installScript();
    EXPECT_EQ(state(), State::ready);
    std::filesystem::remove(installed);
    EXPECT_EQ(state(), State::missing);
}

TEST_F(HelperScriptTest, RunsTheInstalledScriptWithEachArgumentAsAWord) {
    installScript();
    EXPECT_EQ(outcomeOfRun({"open", "/opt/a b", "--x=$(y)", "https://a/\n'"}), "done");
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("scripts.run " + installed.string() +
                            " [open] [/opt/a b] [--x=$(y)] [https://a/\n'] token=tok"));
}

TEST_F(HelperScriptTest, ScriptThatIsNotInstalledIsNotRun) {
    EXPECT_EQ(outcomeOfRun({"open"}), "helper script is not installed at " + installed.string());
    fake.scripts.folder.reset();
    EXPECT_EQ(outcomeOfRun({"open"}),
              "helper script is not installed at ~/.local/share/ferrivane/scripts");
    fake.desktop = Desktop::macOS;
    EXPECT_EQ(outcomeOfRun({"open"}),
              "helper script is not installed at ~/Library/Application Scripts");
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
}

TEST_F(HelperScriptTest, FailureOfTheScriptIsPassedOnAsItIs) {
    installScript();
    fake.scripts.ran = std::unexpected(PlatformError{"the helper script ended with status 7"});
    EXPECT_EQ(outcomeOfRun({"open"}), "the helper script ended with status 7");
}

TEST_F(HelperScriptTest, ProfilesComeFromACopyThatTheScriptMakes) {
    installScript();
    copyByScript(R"({"profile":{"info_cache":{"Default":{"name":"Home"},"P":{"name":"Work"}}}})");
    EXPECT_EQ(outcomeOfLoading(), "Home;Work;");
    EXPECT_TRUE(nothingTemporary());
    const std::string hex = "[0-9A-F]";
    std::string uuid;
    for (const int digits : {8, 4, 4, 4, 12}) {
        if (!uuid.empty()) uuid += "-";
        for (int i = 0; i < digits; ++i) uuid += hex;
    }
    EXPECT_THAT(
        fake.calls.texts(),
        ElementsAre(MatchesRegex("scripts.run " + installed.string() + " .profiles. ." +
                                 temporary.string() + "/chrome-local-state-" + uuid + "\\.json.")));
}

TEST_F(HelperScriptTest, EachCopyHasANameOfItsOwn) {
    installScript();
    copyByScript("{}");
    outcomeOfLoading();
    outcomeOfLoading();
    ASSERT_EQ(fake.calls.texts().size(), 2U);
    EXPECT_NE(fake.calls.texts()[0], fake.calls.texts()[1]);
}

TEST_F(HelperScriptTest, NoCopyStaysWhateverFails) {
    installScript();
    const struct {
        const char* name;
        std::function<void(const std::vector<std::string>&)> work;
        std::expected<void, PlatformError> ran;
        const char* error;
    } rows[] = {
        {"the script, before it wrote", {}, std::unexpected(PlatformError{"status 1"}), "status 1"},
        {"the script, after it wrote", [](const auto& words) { test::writeText(words[1], "{}"); },
         std::unexpected(PlatformError{"status 1"}), "status 1"},
        {"the script, half-way",
         [](const auto& words) { test::writeText(words[1] + ".77.part", "{"); },
         std::unexpected(PlatformError{"status 1"}), "status 1"},
        {"the copy: there is none", {}, {}, "open failed: No such file or directory"},
        {"the copy: no JSON",
         [](const auto& words) { test::writeText(words[1], "{"); },
         {},
         "not JSON: "},
        {"the copy: no catalogue",
         [](const auto& words) { test::writeText(words[1], "{}"); },
         {},
         "no profile.info_cache in "},
    };
    for (const auto& row : rows) {
        fake.scripts.whenRun = row.work;
        fake.scripts.ran = row.ran;
        EXPECT_THAT(outcomeOfLoading(), HasSubstr(row.error)) << row.name;
        EXPECT_TRUE(nothingTemporary()) << row.name;
    }
}

TEST_F(HelperScriptTest, FilesOfOthersStay) {
    installScript();
    copyByScript("{}");
    const auto other = temporary / "chrome-local-state-of-somebody-else.json";
    test::writeText(other, "");
    outcomeOfLoading();
    EXPECT_TRUE(std::filesystem::exists(other));
}

TEST_F(HelperScriptTest, ProfilesWithoutAScriptAreAnError) {
    EXPECT_EQ(outcomeOfLoading(), "helper script is not installed at " + installed.string());
    EXPECT_TRUE(nothingTemporary());
}

}  // namespace
}  // namespace ferrivane
