#include <fstream>

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>

#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/LinuxScripts.h"
#include "tests/linux/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;

// Writes its arguments, its token and what its streams are, each ended by a NUL.
constexpr const char* kRecorder = R"sh(#!/bin/sh
for stream in 0 1 2; do set -- "$@" "$(readlink /proc/$$/fd/$stream)"; done
printf '%s\0' "$@" "${XDG_ACTIVATION_TOKEN-none}" >"$0.record"
exit 0
)sh";

class LinuxScriptsTest : public ::testing::Test {
  protected:
    // Of a script that is run and ends: "done", or the error.
    std::string outcomeOf(const HostSpawn& spawn, const std::filesystem::path& script,
                          const std::vector<std::string>& arguments,
                          const std::optional<std::string>& token = std::nullopt) {
        std::vector<std::string> outcomes;
        LinuxScripts runner(loop, spawn);
        runner.run(script, arguments, token, [&](const auto& result) {
            outcomes.push_back(result ? "done" : result.error().text);
        });
        loop.runUntilIdle();
        EXPECT_EQ(outcomes.size(), 1U);
        return outcomes.empty() ? "no outcome" : outcomes.front();
    }
    std::vector<std::string> recordOf(const std::filesystem::path& script) const {
        std::vector<std::string> words;
        std::ifstream record(script.string() + ".record");
        for (std::string word; std::getline(record, word, '\0');) words.push_back(word);
        return words;
    }

    const test::TempDir dir;
    EventLoop loop;
    const HostSpawn noFlatpak{dir / "no-marker"};
    LinuxScripts scripts{loop, noFlatpak};
};

TEST_F(LinuxScriptsTest, FolderIsBelowTheDataFolder) {
    const test::ScopedVariable data("XDG_DATA_HOME", "/data/my own");
    EXPECT_EQ(scripts.directory(), "/data/my own/ferrivane/scripts");
    for (const std::optional<std::string>& value : {std::optional<std::string>(), {"data"}, {""}}) {
        const test::ScopedVariable none("XDG_DATA_HOME", value);
        EXPECT_TRUE(scripts.directory()->string().ends_with("/.local/share/ferrivane/scripts"));
        EXPECT_TRUE(scripts.directory()->is_absolute());
    }
}

TEST_F(LinuxScriptsTest, FolderIsMadeForThePersonAlone) {
    const test::ScopedVariable data("XDG_DATA_HOME", (dir / "data").string());
    EXPECT_TRUE(scripts.makeDirectory());
    for (const char* folder : {"data", "data/ferrivane", "data/ferrivane/scripts"}) {
        EXPECT_EQ(test::modeOf(dir / folder), 0700U) << folder;
    }
    EXPECT_TRUE(scripts.makeDirectory()) << "again";
}

TEST_F(LinuxScriptsTest, FolderThatCannotBeMadeIsAnError) {
    test::writeText(dir / "data", "a file");
    const test::ScopedVariable data("XDG_DATA_HOME", (dir / "data").string());
    const auto made = scripts.makeDirectory();
    ASSERT_FALSE(made);
    EXPECT_FALSE(made.error().text.empty());
}

TEST_F(LinuxScriptsTest, TemporaryFolderIsThatOfTheEnvironment) {
    const test::ScopedVariable cache("XDG_CACHE_HOME", "/my/cache");
    const test::ScopedVariable folder("TMPDIR", dir.path().string());
    EXPECT_EQ(scripts.temporaryDirectory(), dir.path());
    {
        const test::ScopedVariable gone("TMPDIR", "/no/such/folder");
        EXPECT_EQ(scripts.temporaryDirectory(), "/tmp");
    }
    test::writeText(dir / "marker", "");
    EXPECT_EQ(LinuxScripts(loop, HostSpawn(dir / "marker")).temporaryDirectory(), "/my/cache")
        << "a Flatpak's own is not seen outside";
}

TEST_F(LinuxScriptsTest, ScriptGetsItsArgumentsATokenAndNoStreams) {
    const auto script = test::writeScript(dir / "my script.sh", kRecorder);
    EXPECT_EQ(outcomeOf(noFlatpak, script, {"open", "a b", "$(c)\n'\"", "-x", ""}, "tok"), "done");
    EXPECT_THAT(recordOf(script), ElementsAre("open", "a b", "$(c)\n'\"", "-x", "", "/dev/null",
                                              "/dev/null", "/dev/null", "tok"));
    const test::ScopedVariable token("XDG_ACTIVATION_TOKEN", "of another");
    EXPECT_EQ(outcomeOf(noFlatpak, script, {}), "done");
    EXPECT_EQ(recordOf(script).back(), "none");
}

TEST_F(LinuxScriptsTest, CompletionComesWithTheEndOfTheScript) {
    const auto script =
        test::writeScript(dir / "script.sh", "#!/bin/sh\nsleep 0.3\n: >\"$0.end\"\n");
    EXPECT_EQ(outcomeOf(noFlatpak, script, {}), "done");
    EXPECT_TRUE(std::filesystem::exists(dir / "script.sh.end"));
}

TEST_F(LinuxScriptsTest, AnyOtherEndIsAnError) {
    const struct {
        const char* name;
        const char* text;
        const char* error;
    } rows[] = {
        {"a status", "#!/bin/sh\nexit 7\n", "the helper script ended with status 7"},
        {"a signal", "#!/bin/sh\nkill -9 $$\n", "the helper script ended with status 137"},
        {"no interpreter", "#!/no/such/shell\n",
         "cannot start the helper script: No such file or directory"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(noFlatpak, test::writeScript(dir / "s.sh", row.text), {}), row.error)
            << row.name;
        std::filesystem::remove(dir / "s.sh");
    }
    EXPECT_EQ(outcomeOf(noFlatpak, dir / "gone.sh", {}),
              "cannot start the helper script: No such file or directory");
}

TEST_F(LinuxScriptsTest, ScriptThatHangsIsNotWaitedForWithoutEnd) {
    const auto script =
        test::writeScript(dir / "s.sh", "#!/bin/sh\necho $$ >\"$0.pid\"\nexec sleep 60\n");
    std::vector<std::string> outcomes;
    LinuxScripts impatient(loop, noFlatpak, std::chrono::milliseconds(300));
    impatient.run(script, {}, std::nullopt,
                  [&](const auto& result) { outcomes.push_back(result.error().text); });
    loop.runUntilIdle();
    EXPECT_THAT(outcomes, ElementsAre("the helper script does not end"));
    const auto written = dir / "s.sh.pid";
    ASSERT_TRUE(test::waitUntil([&] {
        return std::filesystem::exists(written) && test::readText(written).ends_with('\n');
    }));
    const pid_t process = std::stoi(test::readText(written));
    ::kill(process, SIGKILL);
    EXPECT_EQ(::waitpid(process, nullptr, 0), process);
}

class HostSpawnTest : public LinuxScriptsTest {
  protected:
    HostSpawnTest() { test::writeScript(dir / "bin/flatpak-spawn", kRecorder); }
    std::filesystem::path writtenMarker() const {
        test::writeText(dir / "marker", "");
        return dir / "marker";
    }
    const std::string path = (dir / "bin").string() + ":" + environment("PATH");
    const HostSpawn flatpak{writtenMarker()};
};

TEST_F(HostSpawnTest, MarkerTellsAFlatpak) {
    EXPECT_TRUE(flatpak.isNeeded());
    EXPECT_FALSE(noFlatpak.isNeeded());
    EXPECT_THAT(noFlatpak.command({"a", "b"}, "tok"), ElementsAre("a", "b"));
    EXPECT_THAT(flatpak.command({"a", "b"}, std::nullopt),
                ElementsAre("flatpak-spawn", "--host", "a", "b"));
}

TEST_F(HostSpawnTest, ScriptIsStartedOnTheHost) {
    const test::ScopedVariable places("PATH", path);
    const auto script = test::writeScript(dir / "my script.sh", "#!/bin/sh\n");
    EXPECT_EQ(outcomeOf(flatpak, script, {"open", "a b"}, "tok"), "done");
    EXPECT_THAT(recordOf(dir / "bin/flatpak-spawn"),
                ElementsAre("--host", "--env=XDG_ACTIVATION_TOKEN=tok", script.string(), "open",
                            "a b", "/dev/null", "/dev/null", "/dev/null", "tok"));
}

TEST_F(HostSpawnTest, MissingOrRefusedIsAnError) {
    {
        const test::ScopedVariable places("PATH", (dir / "empty").string());
        EXPECT_EQ(outcomeOf(flatpak, dir / "s.sh", {}),
                  "cannot start the helper script: No such file or directory");
    }
    std::filesystem::remove(dir / "bin/flatpak-spawn");
    test::writeScript(dir / "bin/flatpak-spawn", "#!/bin/sh\nexit 1\n");
    const test::ScopedVariable places("PATH", path);
    EXPECT_EQ(outcomeOf(flatpak, dir / "s.sh", {}), "the helper script ended with status 1");
}

}  // namespace
}  // namespace ferrivane
