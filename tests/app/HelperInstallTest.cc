#include <gmock/gmock.h>

#include "tests/app/HelperTest.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using HelperScript::State;

class HelperInstall : public test::HelperTest {
  protected:
    HelperInstall() { fake.savePanel.answer = {SavePanel::ok, installed}; }

    // "done", or the description.
    std::string outcome() {
        std::vector<std::string> outcomes;
        HelperScript::install(fake.platform(), log, [&](const auto& result) {
            outcomes.push_back(result ? "done" : result.error().description());
        });
        fake.mainLoop.runUntilIdle();
        EXPECT_EQ(outcomes.size(), 1U);
        return outcomes.empty() ? "no outcome" : outcomes.front();
    }
    State state() { return HelperScript::state(fake.platform()); }
    std::string opening() const {
        return "[INFO] installing helper: panel opening at " + scripts.string();
    }
};

TEST_F(HelperInstall, SavesTheBundledScriptWhereThePersonSays) {
    EXPECT_EQ(outcome(), "done");
    EXPECT_EQ(test::readText(installed), kScript);
    EXPECT_EQ(test::modeOf(installed), 0755U);
    EXPECT_EQ(state(), State::ready);
    EXPECT_THAT(newLogLines(),
                ElementsAre(opening(), "[INFO] installing helper: panel returned 1",
                            "[INFO] helper script installed at " + installed.string()));
}

TEST_F(HelperInstall, PanelStartsInTheFolderAndSaysWhatItIsFor) {
    outcome();
    ASSERT_TRUE(fake.savePanel.asked);
    const SavePanel::Question& asked = *fake.savePanel.asked;
    EXPECT_EQ(asked.directory, scripts);
    EXPECT_EQ(asked.fileName, "ferrivane-helper.sh");
    EXPECT_EQ(asked.button, "Install Helper");
    EXPECT_EQ(asked.title, "Install Ferrivane Helper");
    EXPECT_EQ(asked.message,
              "Click Install Helper to save the script into this folder. Ferrivane can only write "
              "here with your confirmation.");
    fake.desktop = Desktop::macOS;
    outcome();
    EXPECT_EQ(fake.savePanel.asked->message,
              "Click Install Helper to save the script into this folder. macOS only lets Ferrivane "
              "write here with your confirmation.");
}

TEST_F(HelperInstall, FolderIsMadeAndTheLineLoggedBeforeThePanelOpens) {
    std::vector<std::string> before;
    fake.savePanel.whenShown = [&] { before = newLogLines(); };
    outcome();
    EXPECT_THAT(before, ElementsAre(opening()));
    EXPECT_THAT(fake.calls.texts(),
                ElementsAre("scripts.makeDirectory", "savePanel.show " + scripts.string()));
}

TEST_F(HelperInstall, FolderThatCannotBeMadeIsAnErrorBeforeThePanel) {
    fake.scripts.made = std::unexpected(PlatformError{"cannot make it"});
    EXPECT_EQ(outcome(), "cannot make it");
    EXPECT_THAT(fake.calls.of({"savePanel"}), IsEmpty());
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(HelperInstall, BuildWithoutAScriptSaysSoFirst) {
    fake.scripts.bundled.reset();
    fake.scripts.folder.reset();
    EXPECT_EQ(outcome(), "this build has no bundled helper script");
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(HelperInstall, UnknownFolderIsAnError) {
    fake.scripts.folder.reset();
    EXPECT_EQ(outcome(), "helper script is not installed at ~/.local/share/ferrivane/scripts");
    fake.desktop = Desktop::macOS;
    EXPECT_EQ(outcome(), "helper script is not installed at ~/Library/Application Scripts");
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
    EXPECT_THAT(newLogLines(), IsEmpty());
}

TEST_F(HelperInstall, CancellingLeavesTheInstalledScriptAsItWas) {
    installScript("old");
    const struct {
        const char* name;
        SavePanel::Answer answer;
        const char* line;
    } rows[] = {
        {"cancelled", {0, installed}, "[INFO] installing helper: panel returned 0"},
        {"another answer", {-1, installed}, "[INFO] installing helper: panel returned -1"},
        {"no file", {SavePanel::ok, {}}, "[INFO] installing helper: panel returned 1"},
    };
    for (const auto& row : rows) {
        fake.savePanel.answer = row.answer;
        EXPECT_EQ(outcome(), "installation cancelled") << row.name;
        EXPECT_EQ(test::readText(installed), "old") << row.name;
        EXPECT_THAT(newLogLines(), ElementsAre(opening(), row.line)) << row.name;
    }
}

TEST_F(HelperInstall, OutdatedScriptIsReplaced) {
    installScript(std::string(kScript) + "\n");
    EXPECT_EQ(state(), State::outdated);
    EXPECT_EQ(outcome(), "done");
    EXPECT_EQ(state(), State::ready);
}

TEST_F(HelperInstall, ScriptThatCannotBeExecutedIsReplaced) {
    installScript();
    std::filesystem::permissions(installed, std::filesystem::perms::owner_read);
    EXPECT_EQ(outcome(), "done");
    EXPECT_EQ(state(), State::ready);
}

TEST_F(HelperInstall, AnotherPlaceIsTakenAndTheStateStaysMissing) {
    const auto elsewhere = dir / "my helper.sh";
    fake.savePanel.answer.file = elsewhere;
    EXPECT_EQ(outcome(), "done");
    EXPECT_EQ(test::readText(elsewhere), kScript);
    EXPECT_EQ(state(), State::missing);
    EXPECT_EQ(newLogLines().back(), "[INFO] helper script installed at " + elsewhere.string());
}

TEST_F(HelperInstall, LinkThatLeadsNowhereIsReplacedAndNotFollowed) {
    std::filesystem::create_symlink(dir / "target", installed);
    EXPECT_EQ(outcome(), "done");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(installed)));
    EXPECT_FALSE(std::filesystem::exists(dir / "target"));
}

TEST_F(HelperInstall, RefusalsAreThoseOfTheSystem) {
    const auto full = dir / "full";
    std::filesystem::create_directory(full);
    test::writeText(full / "file", "");
    const struct {
        const char* name;
        std::filesystem::path file;
        const char* error;
    } rows[] = {
        {"what is there cannot be removed", full, "remove failed: Directory not empty"},
        {"no such folder", dir / "nowhere/x.sh", "copy failed: No such file or directory"},
    };
    for (const auto& row : rows) {
        fake.savePanel.answer.file = row.file;
        EXPECT_EQ(outcome(), row.error) << row.name;
        EXPECT_THAT(newLogLines(),
                    ElementsAre(opening(), "[INFO] installing helper: panel returned 1"))
            << row.name;
    }
    fake.savePanel.answer.file = installed;
    fake.scripts.bundled = dir / "gone";
    EXPECT_EQ(outcome(), "copy failed: No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(installed));
}

TEST_F(HelperInstall, BothFoldersAreShownForAManualInstall) {
    HelperScript::revealForManualInstall(fake.platform(), log);
    EXPECT_THAT(fake.calls.texts(), ElementsAre("scripts.select " + bundled.string(),
                                                "scripts.openFolder " + scripts.string()));
    const std::string line = "[INFO] helper install: revealing " + bundled.string() + " and " +
                             scripts.string() + " in ";
    EXPECT_THAT(newLogLines(), ElementsAre(line + "the file manager"));
    fake.desktop = Desktop::macOS;
    HelperScript::revealForManualInstall(fake.platform(), log);
    EXPECT_THAT(newLogLines(), ElementsAre(line + "Finder"));
}

TEST_F(HelperInstall, NothingIsShownWhenEitherIsUnknown) {
    fake.scripts.bundled.reset();
    HelperScript::revealForManualInstall(fake.platform(), log);
    fake.scripts.bundled = bundled;
    fake.scripts.folder.reset();
    HelperScript::revealForManualInstall(fake.platform(), log);
    EXPECT_THAT(fake.calls.texts(), IsEmpty());
    EXPECT_THAT(newLogLines(), IsEmpty());
}

}  // namespace
}  // namespace ferrivane
