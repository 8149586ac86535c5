#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using test::Program;
using Words = std::vector<std::string>;

TEST(Processes, ProgramsWithOddNames) {
    const test::TempDir dir;
    for (const char* name :
         {"plain", "with blank", "(parentheses)", "half (", "half )", ") S 1", "line\nend",
          "a-name-of-more-than-fifteen-bytes", "caf\u00e9", "x (deleted) y", " "}) {
        SCOPED_TRACE(name);
        const auto program = test::copyProgram(SENDER, dir / name);
        Program running({program, "sh", "-c", "echo ready; cat"});
        ASSERT_EQ(running.readLine(), "ready");
        // It waits for its child, or is about to.
        EXPECT_TRUE(
            test::waitUntil([&] { return Processes::status(running.pid())->state == 'S'; }));
        const auto status = Processes::status(running.pid());
        ASSERT_TRUE(status);
        EXPECT_EQ(status->command, std::string(name).substr(0, 15));
        EXPECT_EQ(status->parent, ::getpid());
        EXPECT_EQ(Processes::executable(running.pid()), program);
        EXPECT_EQ(Processes::arguments(running.pid()),
                  (Words{program, "sh", "-c", "echo ready; cat"}));
    }
}

TEST(Processes, AProgramThatWasReplacedKeepsItsName) {
    const test::TempDir dir;
    const auto program = test::copyProgram(SENDER, dir / "program");
    const Program running({program, "cat"});
    std::filesystem::remove(program);
    EXPECT_EQ(Processes::executable(running.pid()), program);
    test::copyProgram(SENDER, program);
    EXPECT_EQ(Processes::executable(running.pid()), program);
    std::filesystem::remove(program);
    std::filesystem::rename(test::copyProgram(SENDER, dir / "x"), program);
    EXPECT_EQ(Processes::executable(running.pid()), program);
}

TEST(Processes, ArgumentsDirectoryAndEnvironment) {
    const test::TempDir dir;
    const auto program = test::copyProgram(SENDER, dir / "program");
    Program running(
        {"env", "-C", dir.path(), program, "sh", "-c", "echo ready; cat", "", "a b", ""},
        {{"FULL", "a=b c"}, {"EMPTY", ""}, {"FULLER", "no"}});
    ASSERT_EQ(running.readLine(), "ready");
    const pid_t process = running.pid();
    EXPECT_EQ(Processes::arguments(process),
              (Words{program, "sh", "-c", "echo ready; cat", "", "a b", ""}));
    EXPECT_EQ(Processes::workingDirectory(process), dir.path());
    const auto environment = Processes::environment(process);
    EXPECT_EQ(environment.at("FULL"), "a=b c");
    EXPECT_EQ(environment.at("EMPTY"), "");
    EXPECT_FALSE(environment.contains("FUL"));
}

TEST(Processes, LongArguments) {
    Words command{SENDER, "sh", "-c", "echo ready; cat"};
    for (int i = 0; i < 50; ++i)
        command.push_back(std::string(4096 + static_cast<unsigned>(i), 'x'));
    Program running(command);
    ASSERT_EQ(running.readLine(), "ready");
    EXPECT_EQ(Processes::arguments(running.pid()), command);
}

TEST(Processes, TheControlGroup) {
    const auto group = Processes::controlGroup(::getpid());
    ASSERT_TRUE(group) << "this system has no unified hierarchy";
    EXPECT_TRUE(group->starts_with('/')) << *group;
    const Program running({"cat"});
    EXPECT_EQ(Processes::controlGroup(running.pid()), group) << "a child's is its parent's";
}

TEST(Processes, AZombie) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ASSERT_TRUE(test::waitUntil([&] { return Processes::status(child)->state == 'Z'; }));
    EXPECT_EQ(Processes::status(child)->parent, ::getpid());
    EXPECT_EQ(Processes::executable(child), std::nullopt);
    EXPECT_EQ(Processes::arguments(child), Words());
    EXPECT_EQ(Processes::workingDirectory(child), std::nullopt);
    ::waitpid(child, nullptr, 0);
}

TEST(Processes, NoSuchProcess) {
    Program ended({"cat"});
    const pid_t gone = ended.pid();
    ended.end();
    for (const pid_t process : {gone, 0, -1, 2147483647}) {
        SCOPED_TRACE(process);
        EXPECT_FALSE(Processes::status(process));
        EXPECT_FALSE(Processes::executable(process));
        EXPECT_TRUE(Processes::arguments(process).empty());
        EXPECT_FALSE(Processes::workingDirectory(process));
        EXPECT_TRUE(Processes::environment(process).empty());
        EXPECT_FALSE(Processes::controlGroup(process));
    }
}

}  // namespace
}  // namespace ferrivane
