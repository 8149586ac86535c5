#include "Ferrivane/linux/EventLoop.h"

#include <algorithm>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ferrivane {

std::chrono::steady_clock::time_point EventLoop::now() const {
    return std::chrono::steady_clock::now();
}

void EventLoop::after(std::chrono::milliseconds delay, std::function<void()> work) {
    timers_.emplace(std::pair(now() + delay, ++sequence_), std::move(work));
}

void EventLoop::watchChild(pid_t child, std::function<void(int status)> ended) {
    // Debian 12's header declares pidfd_open without C linkage.
    FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    children_.insert_or_assign(child, Child{std::move(handle), std::move(ended)});
}

void EventLoop::runUntilIdle() {
    while (!timers_.empty() || !children_.empty()) {
        runDueTimers();
        int timeout = -1;
        if (!timers_.empty()) {
            const auto wait =
                std::chrono::ceil<std::chrono::milliseconds>(timers_.begin()->first.first - now());
            timeout = static_cast<int>(std::max<std::int64_t>(0, wait.count()));
        } else if (children_.empty()) {
            return;
        }
        waitForChildren(timeout);
    }
}

void EventLoop::runDueTimers() {
    const Time due = now();
    while (!timers_.empty() && timers_.begin()->first.first <= due) {
        const auto timer = timers_.extract(timers_.begin());
        timer.mapped()();
    }
}

void EventLoop::waitForChildren(int timeoutMilliseconds) {
    std::vector<pollfd> handles;
    std::vector<pid_t> order;
    for (const auto& [child, entry] : children_) {
        handles.push_back({entry.handle.get(), POLLIN, 0});
        order.push_back(child);
    }
    // Without a handle, when no descriptor is left, a child is asked after now and then.
    constexpr int kAskingInterval = 50;
    const bool mustAsk =
        std::ranges::any_of(handles, [](const pollfd& handle) { return handle.fd < 0; });
    if (mustAsk && (timeoutMilliseconds < 0 || timeoutMilliseconds > kAskingInterval)) {
        timeoutMilliseconds = kAskingInterval;
    }
    if (::poll(handles.data(), handles.size(), timeoutMilliseconds) < 0) return;
    for (std::size_t i = 0; i < handles.size(); ++i) {
        if (handles[i].fd >= 0 && handles[i].revents == 0) continue;
        int status = 0;
        if (::waitpid(order[i], &status, WNOHANG) != order[i]) continue;
        auto entry = children_.extract(order[i]);
        if (entry.empty()) continue;
        entry.mapped().ended(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    }
}

}  // namespace ferrivane
