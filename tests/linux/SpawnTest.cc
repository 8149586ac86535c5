#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/Spawn.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

class Spawn : public ::testing::Test {
  protected:
    // What the started program says of itself.
    std::string reportWith(const std::optional<std::string>& token) const {
        const auto process =
            spawnDetached({STAND_IN_BROWSER, "--report=" + (dir / "report").string()}, token);
        if (!process) return "not started";
        ::waitpid(*process, nullptr, 0);
        return test::readText(dir / "report");
    }
    static std::string expected(const std::string& token) {
        return "token " + token +
               "\nsession its own\n0 /dev/null\n1 /dev/null\n2 /dev/null\n"
               "blocked 0\nignored 0\n";
    }

    const test::TempDir dir;
};

TEST_F(Spawn, ItHasNothingOfOurs) {
    // In a child, whose signals and descriptors are its own.
    const std::string report = test::inChild([this] {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
        struct sigaction ignore{};
        ignore.sa_handler = SIG_IGN;
        for (const int signal : {SIGCHLD, SIGPIPE, SIGHUP, SIGTERM}) {
            ::sigaction(signal, &ignore, nullptr);
        }
        ::dup2(STDERR_FILENO, 200);
        ::close(STDIN_FILENO);
        return reportWith(std::nullopt);
    });
    EXPECT_EQ(report, expected("(none)"));
}

TEST_F(Spawn, TheActivationTokenIsTheGivenOneOrNone) {
    EXPECT_EQ(reportWith("abc"), expected("abc"));
    const test::ScopedVariable inherited("XDG_ACTIVATION_TOKEN", "old");
    EXPECT_EQ(reportWith(std::nullopt), expected("(none)"));
    EXPECT_EQ(reportWith("new"), expected("new"));
    EXPECT_EQ(reportWith(""), expected(""));
}

TEST_F(Spawn, OtherVariablesStay) {
    const test::ScopedVariable variable("XDG_ACTIVATION_TOKEN_OF_OURS", "kept");
    const auto process = spawnDetached(
        {"sh", "-c", "echo $XDG_ACTIVATION_TOKEN_OF_OURS > \"$0\"", dir / "file"}, "token");
    ASSERT_TRUE(process);
    ::waitpid(*process, nullptr, 0);
    EXPECT_EQ(test::readText(dir / "file"), "kept\n");
}

TEST_F(Spawn, OurDescriptorsAndEnvironmentStayAsTheyAre) {
    const std::size_t before = test::openDescriptors();
    reportWith("abc");
    EXPECT_FALSE(spawnDetached({"/no/such/program"}, "abc"));
    EXPECT_EQ(test::openDescriptors(), before);
    EXPECT_EQ(::getenv("XDG_ACTIVATION_TOKEN"), nullptr);  // NOLINT(concurrency-mt-unsafe)
}

TEST_F(Spawn, Refusals) {
    test::writeText(dir / "text", "");
    const test::ScopedVariable path("PATH", "/usr/bin:/bin");
    const struct {
        const char* name;
        std::vector<std::string> command;
        int error;
    } rows[] = {
        {"a missing program", {"/no/such/program"}, ENOENT},
        {"a program missing on the path", {"no-such-program-anywhere"}, ENOENT},
        {"a file that may not be run", {dir / "text"}, EACCES},
        {"a folder", {"/"}, EACCES},
        {"a program below a file", {dir / "text/program"}, ENOTDIR},
        {"an empty name", {""}, ENOENT},
        {"an argument of 131,072 bytes", {"true", std::string(131072, 'x')}, E2BIG},
        {"an argument of 1 MB", {"true", std::string(1000000, 'x')}, E2BIG},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto process = spawnDetached(row.command, std::nullopt);
        EXPECT_EQ(process ? 0 : process.error(), row.error);
    }
    const auto longest = spawnDetached({"true", std::string(131071, 'x')}, std::nullopt);
    ASSERT_TRUE(longest) << "the longest argument that the system takes";
    ::waitpid(*longest, nullptr, 0);
}

}  // namespace
}  // namespace ferrivane
