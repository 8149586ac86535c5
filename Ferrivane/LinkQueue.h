// Links on their way, strictly one at a time and in the order of their arrival. Main thread only.
//
// Without file descriptors a link could only be lost: the queue waits for them, at most 10 seconds
// each time they run out.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Ferrivane/Router.h"
#include "Ferrivane/platform/Platform.h"
#include "core/Log.h"
#include "core/Opener.h"

namespace ferrivane {

class LinkQueue {
  public:
    struct Link {
        std::string url;
        std::optional<Opener> opener;
        std::optional<std::string> activationToken;
    };

    // The log and the platform's ports outlive the queue; the queue outlives every link in it.
    LinkQueue(const Platform& platform, Log& log, std::filesystem::path rulesFile);

    // Returns before anything is done for the link.
    void add(Link link, Router::Completion completion = {});
    // Calls `work` once no link is waiting or under way, never before this returns.
    void whenIdle(std::function<void()> work);

    // Of the links that wait.
    std::size_t count() const { return waiting_.size(); }
    std::size_t bytes() const { return bytes_; }

  private:
    struct Entry {
        Link link;
        Router::Completion completion;
    };

    void start();
    void routeNext();
    bool mustWait();

    const Platform platform_;
    Router router_;
    std::deque<Entry> waiting_;
    std::size_t bytes_ = 0;
    std::vector<std::function<void()>> whenIdle_;
    bool isBusy_ = false;
    std::optional<std::chrono::steady_clock::time_point> waitingSince_;
};

}  // namespace ferrivane
