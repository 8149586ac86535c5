#include "Ferrivane/linux/EventLoop.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ferrivane {

static constexpr std::chrono::seconds kRestDelay{2};

EventLoop::EventLoop() : handles_(::epoll_create1(EPOLL_CLOEXEC)) {}

std::chrono::steady_clock::time_point EventLoop::now() const {
    return std::chrono::steady_clock::now();
}

void EventLoop::after(std::chrono::milliseconds delay, std::function<void()> work) {
    timers_.emplace(std::pair(now() + delay, ++sequence_), std::move(work));
}

void EventLoop::watchChild(pid_t child, std::function<void(int status)> ended) {
    // Debian 12's header declares pidfd_open without C linkage.
    FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = child;
    if (::epoll_ctl(handles_.get(), EPOLL_CTL_ADD, handle.get(), &event) != 0) handle.reset();
    children_.insert_or_assign(child, Child{std::move(handle), std::move(ended)});
}

void EventLoop::forgetChild(pid_t child) {
    const auto known = children_.find(child);
    if (known != children_.end()) known->second.ended = nullptr;
}

bool EventLoop::isIdle() const {
    return timers_.empty() && retained_ == 0 &&
           std::ranges::none_of(
               children_, [](const auto& child) { return static_cast<bool>(child.second.ended); });
}

void EventLoop::runUntilIdle() {
    while (!isIdle()) step();
}

void EventLoop::run() {
    while (!isStopped_) step();
    isStopped_ = false;
}

void EventLoop::step() {
    if (iterate_) return iterate_();
    collectChildren(timeoutMilliseconds());
    runDueTimers();
}

void EventLoop::dispatch() {
    const bool rests = isIdle() && restAt_ && *restAt_ <= now();
    collectChildren(0);
    runDueTimers();
    if (rests) {
        restAt_.reset();
        if (rest_) rest_();
    } else {
        noteWork();
    }
}

void EventLoop::noteWork() {
    restAt_ = now() + kRestDelay;
}

void EventLoop::waitThrough(std::function<void()> iterate) {
    iterate_ = std::move(iterate);
    noteWork();
}

int EventLoop::timeoutMilliseconds() const {
    constexpr std::chrono::milliseconds kAskingInterval{50};
    std::optional<Time> next;
    if (!timers_.empty()) next = timers_.begin()->first.first;
    if (restAt_) next = std::min(next.value_or(Time::max()), *restAt_);
    // Without a handle, when no descriptor is left, a child is asked after now and then.
    if (std::ranges::any_of(children_, [](const auto& child) {
            return !child.second.handle && child.second.ended;
        })) {
        next = std::min(next.value_or(Time::max()), lastAsked_ + kAskingInterval);
    }
    if (!next) return -1;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*next - now());
    return static_cast<int>(std::max<std::int64_t>(0, wait.count()));
}

void EventLoop::runDueTimers() {
    const Time due = now();
    while (!timers_.empty() && timers_.begin()->first.first <= due) {
        const auto timer = timers_.extract(timers_.begin());
        timer.mapped()();
    }
}

void EventLoop::collectChildren(int timeoutMilliseconds) {
    std::array<epoll_event, 16> events{};
    const int count = handles_ ? ::epoll_wait(handles_.get(), events.data(),
                                              static_cast<int>(events.size()), timeoutMilliseconds)
                               : ::poll(nullptr, 0, timeoutMilliseconds);
    for (int i = 0; i < count; ++i) collect(events.at(static_cast<std::size_t>(i)).data.fd);

    lastAsked_ = now();
    std::vector<pid_t> withoutHandle;
    for (const auto& [child, entry] : children_) {
        if (!entry.handle) withoutHandle.push_back(child);
    }
    for (const pid_t child : withoutHandle) collect(child);
}

void EventLoop::collect(pid_t child) {
    int status = 0;
    if (!children_.contains(child) || ::waitpid(child, &status, WNOHANG) != child) return;
    const auto ended = std::move(children_.extract(child).mapped().ended);
    if (ended) ended(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
}

}  // namespace ferrivane
