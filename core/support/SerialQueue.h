// Runs jobs one at a time, in the order they were given, on a thread of its own that starts with
// the first job.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace ferrivane {

class SerialQueue {
  public:
    // The label tells queues apart.
    explicit SerialQueue(std::string label);
    // Runs what is still queued, then ends the thread.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return label_; }

    // Returns at once; callable from any thread. While the system has no thread left the job is run
    // before the call returns.
    void async(std::function<void()> job);

    // Waits until every job given so far has run; false when that takes longer than `limit`.
    bool drain(std::chrono::milliseconds limit);

  private:
    void startThread();
    void run();
    void runJobs(std::unique_lock<std::mutex>& lock);

    const std::string label_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> jobs_;
    bool running_ = false;  // a job is being run
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace ferrivane
