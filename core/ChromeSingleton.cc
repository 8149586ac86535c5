#include "core/ChromeSingleton.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include "core/port/Paths.h"
#include "core/support/FileDescriptor.h"
#include "core/support/FileError.h"

namespace ferrivane::ChromeSingleton {
namespace {

using Kind = SingletonError::Kind;
using Clock = std::chrono::steady_clock;

// One less than the space for a path in the smallest socket address of the systems we run on.
constexpr std::size_t kLongestSocketPath = 103;
constexpr std::size_t kLongestReply = 16;
// Chrome takes what its first read returns for the whole message, so the message must leave in one
// piece. Some systems' default buffer holds a quarter of the largest one.
constexpr int kSendBuffer = 65536;

std::unexpected<SingletonError> failure(Kind kind) {
    return std::unexpected(SingletonError{.kind = kind});
}

std::unexpected<SingletonError> failure(Kind kind, int code) {
    return std::unexpected(SingletonError{.kind = kind, .code = code});
}

std::optional<std::string> linkText(const std::filesystem::path& link) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(link, error);
    return error ? std::nullopt : std::optional(target.string());
}

std::filesystem::path cookieBeside(const std::string& socketPath) {
    return std::filesystem::path(socketPath).parent_path() / "SingletonCookie";
}

// Keeps signals away from a thread. A system call that a signal interrupts would look like an
// answer that never came, and the link would be opened a second time.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t before_{};
};

// Repeats a system call that was interrupted, which happens with all signals held too (stopping and
// continuing the process does it), while there is time left. A limit of 0 is none.
template<typename Call>
ssize_t uninterrupted(std::chrono::seconds limit, Call call) {
    const Clock::time_point start = Clock::now();
    for (;;) {
        const ssize_t result = call();
        if (result >= 0 || errno != EINTR) return result;
        const auto elapsed = std::chrono::floor<std::chrono::seconds>(Clock::now() - start);
        if (limit.count() > 0 && elapsed >= limit) return result;
    }
}

struct Peer {
    pid_t pid = 0;
    uid_t uid = static_cast<uid_t>(-1);  // nobody
};

Peer peerOf(int fd) {
    Peer peer;
#ifdef LOCAL_PEERPID
    gid_t group = 0;
    ::getpeereid(fd, &peer.uid, &group);
    socklen_t size = sizeof peer.pid;
    ::getsockopt(fd, SOL_LOCAL, LOCAL_PEERPID, &peer.pid, &size);
#else
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0) {
        peer = {credentials.pid, credentials.uid};
    }
#endif
    return peer;
}

std::expected<FileDescriptor, SingletonError> connectTo(const std::string& socketPath,
                                                        std::chrono::seconds timeout) {
    sockaddr_un address{};
    if (socketPath.size() > kLongestSocketPath) {
        return std::unexpected(SingletonError{.kind = Kind::pathTooLong, .path = socketPath});
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.data(), socketPath.size());

    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (!socket) return failure(Kind::connectFailed, errno);
    ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
#ifdef SO_NOSIGPIPE
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
    timeval limit{};
    // Systems disagree about negative times.
    limit.tv_sec = static_cast<decltype(limit.tv_sec)>(std::max<std::int64_t>(0, timeout.count()));
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);

    const ssize_t connected = uninterrupted(timeout, [&] {
        return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    });
    if (connected != 0) return failure(Kind::connectFailed, errno);
    return socket;
}

ssize_t sendSome(int fd, std::string_view bytes) {
#ifdef MSG_NOSIGNAL
    return ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
#else
    return ::send(fd, bytes.data(), bytes.size(), 0);
#endif
}

std::chrono::seconds wholeSeconds(double timeout) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!std::isfinite(timeout) || timeout >= kLimit || timeout < -kLimit) std::abort();
    return std::chrono::seconds(static_cast<std::int64_t>(timeout));
}

}  // namespace

std::string SingletonError::description() const {
    switch (kind) {
        case Kind::pathTooLong:
            return "socket path too long: " + path;
        case Kind::messageTooLong:
            return "message of " + std::to_string(length) + " bytes exceeds Chrome's limit";
        case Kind::connectFailed:
            return "connect failed: " + systemErrorText(code);
        case Kind::writeFailed:
            return "write failed: " + systemErrorText(code);
        case Kind::refused:
            return "Chrome answered " + reply.description();
        case Kind::noSocket:
            return "no singleton socket in Chrome's user data directory";
        case Kind::cookieMismatch:
            return "singleton cookie does not match";
        case Kind::noReply:
            return "Chrome did not answer";
    }
    return {};
}

std::filesystem::path userDataDirectory() {
    return Paths::chromeUserDataDirectory();
}

std::expected<std::string, SingletonError> socketPath(const std::filesystem::path& directory) {
    const auto socket = linkText(directory / "SingletonSocket");
    if (!socket) return failure(Kind::noSocket);
    const auto cookie = linkText(directory / "SingletonCookie");
    if (!cookie || cookie != linkText(cookieBeside(*socket))) return failure(Kind::cookieMismatch);
    return *socket;
}

std::expected<void, SingletonError> notify(const std::vector<std::string>& argv,
                                           const std::string& socketPath, double timeout) {
    std::error_code ignored;
    const std::string message =
        ChromeSingletonMessage::encode(std::filesystem::current_path(ignored).string(), argv);
    if (message.size() > ChromeSingletonMessage::maximumLength) {
        return std::unexpected(
            SingletonError{.kind = Kind::messageTooLong, .length = message.size()});
    }

    const std::chrono::seconds limit = wholeSeconds(timeout);
    const SignalsHeld held;
    // The socket's folder lies in a temporary directory that others can write to. Between the check
    // of the cookies and the connection it can have been replaced, so look again, and at who
    // listens.
    const auto cookieBefore = linkText(cookieBeside(socketPath));
    const auto socket = connectTo(socketPath, limit);
    if (!socket) return std::unexpected(socket.error());
    if (linkText(cookieBeside(socketPath)) != cookieBefore ||
        peerOf(socket->get()).uid != ::getuid()) {
        return failure(Kind::cookieMismatch);
    }

    std::string_view rest = message;
    while (!rest.empty()) {
        const ssize_t count = uninterrupted(limit, [&] { return sendSome(socket->get(), rest); });
        if (count < 1) return failure(Kind::writeFailed, errno);
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    ::shutdown(socket->get(), SHUT_WR);

    std::array<char, kLongestReply> answer{};
    const ssize_t count =
        uninterrupted(limit, [&] { return ::read(socket->get(), answer.data(), answer.size()); });
    if (count < 1) return failure(Kind::noReply);
    auto reply =
        ChromeSingletonMessage::Reply::from({answer.data(), static_cast<std::size_t>(count)});
    if (reply.kind != ChromeSingletonMessage::Reply::Kind::ack) {
        return std::unexpected(SingletonError{.kind = Kind::refused, .reply = std::move(reply)});
    }
    return {};
}

std::expected<pid_t, SingletonError> listener(const std::string& socketPath) {
    constexpr std::chrono::seconds kLimit{5};
    const auto socket = connectTo(socketPath, kLimit);
    if (!socket) return std::unexpected(socket.error());
    return peerOf(socket->get()).pid;
}

}  // namespace ferrivane::ChromeSingleton
