#include "tests/support/Child.h"

#include <array>
#include <cerrno>
#include <exception>
#include <string_view>
#include <system_error>
#include <utility>

#include <grp.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ferrivane::test {
namespace {

void writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace

Child::Child(const std::function<int()>& body) : pid_(::fork()) {
    if (pid_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (pid_ > 0) return;
    int status = 99;
    try {
        status = body();
    } catch (const std::exception& exception) {
        writeAll(STDERR_FILENO, std::string("in a child: ") + exception.what() + "\n");
    }
    ::_exit(status);
}

Child::~Child() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    (void)wait();
}

int Child::wait() {
    int status = 0;
    const pid_t pid = std::exchange(pid_, -1);
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string inChild(const std::function<std::string()>& body) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    Child child([&] {
        ::close(ends[0]);
        writeAll(ends[1], body());
        return 0;
    });
    ::close(ends[1]);
    std::string text;
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t count = ::read(ends[0], buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(ends[0]);
    const int status = child.wait();
    if (status < 0) return "ended by signal " + std::to_string(-status);
    if (status > 0) return "exit status " + std::to_string(status);
    return text;
}

void setVariable(const char* name, const char* value) {
    if (value == nullptr) {
        ::unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
    } else {
        ::setenv(name, value, 1);  // NOLINT(concurrency-mt-unsafe)
    }
}

void becomeUnprivileged() {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() != 0) return;
    if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) {
        throw std::system_error(errno, std::generic_category(), "setuid");
    }
}

}  // namespace ferrivane::test
