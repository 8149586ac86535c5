// Changes its root directory as a sandbox does, prints "ready", and ends when its standard input
// does.
//
//   sandboxed ROOT
#include <cstdio>

#include <sched.h>
#include <unistd.h>

int main(int count, char** values) {
    if (count < 2) return 2;
    // What takes a privilege is allowed in a user namespace of one's own.
    if (::geteuid() != 0 && ::unshare(CLONE_NEWUSER) != 0) return 1;
    if (::chroot(values[1]) != 0) return 1;
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    ::_exit(0);
}
