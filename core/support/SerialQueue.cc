#include "core/support/SerialQueue.h"

#include <system_error>
#include <utility>

#include <pthread.h>
#include <signal.h>

namespace ferrivane {

SerialQueue::SerialQueue(std::string label) : label_(std::move(label)) {}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void SerialQueue::async(std::function<void()> job) {
    std::unique_lock lock(mutex_);
    jobs_.push_back(std::move(job));
    if (!thread_.joinable()) startThread();
    changed_.notify_all();
    if (!thread_.joinable() && !running_) runJobs(lock);
}

// Signals belong to the threads that expect them.
void SerialQueue::startThread() {
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        thread_ = {};  // the user may have no more of them
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool SerialQueue::drain(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [this] { return jobs_.empty() && !running_; });
}

void SerialQueue::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return (!jobs_.empty() && !running_) || ending_; });
        if (jobs_.empty()) return;
        runJobs(lock);
    }
}

void SerialQueue::runJobs(std::unique_lock<std::mutex>& lock) {
    while (!jobs_.empty()) {
        const std::function<void()> job = std::move(jobs_.front());
        jobs_.pop_front();
        running_ = true;
        lock.unlock();
        job();
        lock.lock();
        running_ = false;
    }
    changed_.notify_all();
}

}  // namespace ferrivane
