// Runs its arguments as a child process and ends with the child's exit status. Copies of it, each
// with a desktop entry of its own, play the applications that a link comes from.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s PROGRAM [ARGUMENT...]\n", argv[0]);
        return 2;
    }
    pid_t child = -1;
    const int failure = ::posix_spawnp(&child, argv[1], nullptr, nullptr, argv + 1, environ);
    if (failure != 0) {
        std::fprintf(stderr, "%s: %s\n", argv[1],
                     std::strerror(failure));  // NOLINT(concurrency-mt-unsafe)
        return 127;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return 126;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
