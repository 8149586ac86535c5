#include "Ferrivane/linux/DetachedCaller.h"

#include <array>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace ferrivane {

void DetachedCaller::detach() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) return;
    if (child == 0) {
        ::setsid();
        // A caller that stopped reading our output must not end the work.
        ::signal(SIGPIPE, SIG_IGN);
        report_ = std::move(writing);
        return;
    }
    writing.reset();
    unsigned char status = EXIT_FAILURE;
    while (::read(reading.get(), &status, 1) < 0 && errno == EINTR) {
    }
    ::_exit(status);
}

void DetachedCaller::release(int status) {
    if (!report_) return;
    // A caller that reads our output to its end must not wait for the child.
    const FileDescriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (null) ::dup2(null.get(), stream);
    }
    const auto byte = static_cast<unsigned char>(status);
    (void)!::write(report_.get(), &byte, 1);
    report_.reset();
}

}  // namespace ferrivane
