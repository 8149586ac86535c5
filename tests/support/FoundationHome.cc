#include "tests/support/FoundationHome.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include <crt_externs.h>
#include <mach-o/dyld.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TempDir.h"

namespace ferrivane::test {
namespace {

constexpr const char* kVariable = "CFFIXED_USER_HOME";
constexpr int kFailed = 1;

int runAgain() {
    const TempDir home;
    ::setenv(kVariable, home.path().c_str(), 1);
    std::string program(4096, '\0');
    auto size = static_cast<std::uint32_t>(program.size());
    if (::_NSGetExecutablePath(program.data(), &size) != 0) return kFailed;
    pid_t child = 0;
    if (::posix_spawn(&child, program.c_str(), nullptr, nullptr, *_NSGetArgv(), *_NSGetEnviron()) !=
        0) {
        return kFailed;
    }
    int status = 0;
    const bool hasEnded = ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return hasEnded ? WEXITSTATUS(status) : kFailed;
}

}  // namespace

std::filesystem::path foundationHome() {
    const char* const home = std::getenv(kVariable);
    if (home == nullptr) ::_exit(runAgain());
    return home;
}

}  // namespace ferrivane::test
