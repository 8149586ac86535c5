#include "tests/support/FakeChrome.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <future>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace ferrivane::test {
namespace {

constexpr std::size_t kLongestMessage = 32768;
constexpr std::string_view kCookie = "14627834110984352106";

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

FileDescriptor newSocket() {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (!socket) fail("socket");
    ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC);
    return socket;
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() > sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        fail("socket path");
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

// Replaces the link in one step, as somebody else would who must not be noticed.
void setLink(const std::filesystem::path& link, const std::optional<std::string>& text) {
    if (!text) {
        std::filesystem::remove(link);
        return;
    }
    std::filesystem::path next = link;
    next += ".next";
    std::filesystem::create_symlink(*text, next);
    std::filesystem::rename(next, link);
}

void sendAll(int fd, std::string_view bytes) {
#ifdef MSG_NOSIGNAL
    constexpr int kFlags = MSG_NOSIGNAL;
#else
    constexpr int kFlags = 0;
    const int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
    (void)!::send(fd, bytes.data(), bytes.size(), kFlags);  // the other side may be gone
}

std::string lockText() {
    std::array<char, 256> host{};
    ::gethostname(host.data(), host.size() - 1);
    return std::string(host.data()) + "-" + std::to_string(::getpid());
}

}  // namespace

FakeChrome::Message FakeChrome::Message::from(std::string bytes) {
    std::vector<std::string> items;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = bytes.find('\0', start);
        items.push_back(bytes.substr(start, end - start));
        if (end == std::string::npos) break;
        start = end + 1;
    }
    Message message;
    message.wellFormed = items.size() >= 3 && items[0] == "START";
    if (items.size() > 1) message.currentDirectory = items[1];
    if (items.size() > 2) message.argv.assign(items.begin() + 2, items.end());
    message.bytes = std::move(bytes);
    return message;
}

FakeChrome::FakeChrome(const std::filesystem::path& directory, const Options& options)
    : userData_(directory / "user-data") {
    const std::string shortest = (directory / "s" / "SingletonSocket").string();
    const std::size_t padding =
        std::max(options.socketPathLength, shortest.size()) - shortest.size();
    const std::filesystem::path folder = directory / ("s" + std::string(padding, '-'));
    socketPath_ = (folder / "SingletonSocket").string();
    std::filesystem::create_directories(userData_);
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);

    listener_ = newSocket();
    const sockaddr_un address = addressOf(socketPath_);
    if (::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        fail("bind");
    }
    if (::listen(listener_.get(), options.backlog) != 0) fail("listen");
    setLink(userData_ / "SingletonSocket", socketPath_);
    setSocketCookie(std::string(kCookie));
    setUserDataCookie(std::string(kCookie));
    setLock(lockText());

    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) fail("pipe");
    wakeUp_ = FileDescriptor(ends[0]);
    stopper_ = FileDescriptor(ends[1]);
    for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
    if (options.accepting) startAccepting();
}

FakeChrome::~FakeChrome() {
    stop();
}

std::filesystem::path FakeChrome::socketDirectory() const {
    return std::filesystem::path(socketPath_).parent_path();
}

void FakeChrome::behave(std::vector<Behaviour> oneAfterAnother) {
    const std::lock_guard lock(mutex_);
    behaviours_ = std::move(oneAfterAnother);
}

void FakeChrome::setUserDataCookie(const std::optional<std::string>& text) {
    setLink(userData_ / "SingletonCookie", text);
}

void FakeChrome::setSocketCookie(const std::optional<std::string>& text) {
    setLink(socketDirectory() / "SingletonCookie", text);
}

void FakeChrome::setLock(const std::optional<std::string>& text) {
    setLink(userData_ / "SingletonLock", text);
}

void FakeChrome::startAccepting() {
    queued_.clear();
    // Signals are for the thread under test.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    // Some tests fork: not while the thread is being made.
    std::promise<void> isRunning;
    thread_ = std::thread([this, &isRunning] {
        isRunning.set_value();
        run();
    });
    isRunning.get_future().wait();
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void FakeChrome::fillBacklog() {
    const sockaddr_un address = addressOf(socketPath_);
    for (;;) {
        FileDescriptor client = newSocket();
        ::fcntl(client.get(), F_SETFL, O_NONBLOCK);
        if (::connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
            0) {
            return;
        }
        queued_.push_back(std::move(client));
    }
}

void FakeChrome::stop() {
    // Written, not closed: a forked child may hold this end too.
    if (stopper_) (void)!::write(stopper_.get(), "x", 1);
    if (thread_.joinable()) thread_.join();
    stopper_.reset();
    wakeUp_.reset();
    listener_.reset();
    held_.clear();
    queued_.clear();
}

void FakeChrome::crash() {
    stop();
}

void FakeChrome::quit() {
    stop();
    for (const char* name : {"SingletonLock", "SingletonSocket", "SingletonCookie"}) {
        std::filesystem::remove(userData_ / name);
    }
    std::filesystem::remove_all(socketDirectory());
}

std::vector<FakeChrome::Message> FakeChrome::messages() const {
    const std::lock_guard lock(mutex_);
    return messages_;
}

bool FakeChrome::waitForMessages(std::size_t count, Milliseconds limit) const {
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, limit, [&] { return messages_.size() >= count; });
}

std::size_t FakeChrome::connections() const {
    const std::lock_guard lock(mutex_);
    return connections_;
}

// Waits for the time to pass, or earlier for an event on `fd`; false when everything is to end.
bool FakeChrome::pause(Milliseconds time, int fd, short events) const {
    std::array<pollfd, 2> watched{pollfd{wakeUp_.get(), POLLIN, 0}, pollfd{fd, events, 0}};
    const nfds_t count = fd >= 0 ? 2 : 1;
    ::poll(watched.data(), count, static_cast<int>(time.count()));
    return watched[0].revents == 0;
}

void FakeChrome::run() {
    constexpr Milliseconds kForever{-1};
    while (pause(kForever, listener_.get(), POLLIN)) {
        FileDescriptor connection(
            ::accept(listener_.get(), nullptr, nullptr));  // NOLINT(clang-analyzer-unix.*)
        if (connection) serve(std::move(connection));
    }
}

FakeChrome::Behaviour FakeChrome::nextBehaviour() {
    const std::lock_guard lock(mutex_);
    ++connections_;
    Behaviour next = behaviours_.front();
    if (behaviours_.size() > 1) behaviours_.erase(behaviours_.begin());
    return next;
}

std::string FakeChrome::read(int fd, Reading reading) const {
    if (reading == Reading::nothing) return {};
    constexpr Milliseconds kForever{-1};
    std::string bytes;
    std::array<char, kLongestMessage> buffer;
    const std::size_t most = reading == Reading::firstBytes ? 5 : buffer.size();
    while (bytes.size() < most && pause(kForever, fd, POLLIN)) {
        if (reading == Reading::arrival) return {};
        const ssize_t count = ::read(fd, buffer.data(), most - bytes.size());
        if (count <= 0) break;
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (reading == Reading::once) break;
    }
    return bytes;
}

void FakeChrome::serve(FileDescriptor connection) {
    const int fd = connection.get();
    const Behaviour behaviour = nextBehaviour();
    if (!pause(behaviour.beforeReading)) return;
    std::string bytes = read(fd, behaviour.reading);
    const bool isProbe = bytes.empty() && (behaviour.reading == Reading::untilEnd ||
                                           behaviour.reading == Reading::once);
    if (!bytes.empty()) {
        const std::lock_guard lock(mutex_);
        messages_.push_back(Message::from(std::move(bytes)));
        arrived_.notify_all();
    }
    if (isProbe || !pause(behaviour.beforeAnswer)) return;
    for (std::size_t i = 0; i < behaviour.answer.size(); ++i) {
        if (i > 0 && !pause(behaviour.betweenWrites, fd)) return;
        sendAll(fd, behaviour.answer[i]);
    }
    if (behaviour.ending == Ending::hold) held_.push_back(std::move(connection));
}

}  // namespace ferrivane::test
