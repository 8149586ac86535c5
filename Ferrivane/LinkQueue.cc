#include "Ferrivane/LinkQueue.h"

#include <utility>

#include "core/support/Descriptors.h"

namespace ferrivane {
namespace {

// The lock, the socket or a process, the log; a lack of them passes, as a rule.
constexpr std::size_t kDescriptorsOfLink = 4;
constexpr std::chrono::milliseconds kDescriptorsInterval{100};
constexpr std::chrono::seconds kDescriptorsLimit{10};

}  // namespace

LinkQueue::LinkQueue(const Platform& platform, Log& log, std::filesystem::path rulesFile)
    : platform_(platform), router_(platform, log, std::move(rulesFile)) {}

void LinkQueue::add(Link link, Router::Completion completion) {
    bytes_ += link.url.size();
    waiting_.push_back({std::move(link), std::move(completion)});
    start();
}

void LinkQueue::whenIdle(std::function<void()> work) {
    whenIdle_.push_back(std::move(work));
    start();
}

void LinkQueue::start() {
    if (std::exchange(isBusy_, true)) return;
    platform_.mainLoop.after({}, [this] { routeNext(); });
}

void LinkQueue::routeNext() {
    if (waiting_.empty()) {
        isBusy_ = false;
        waitingSince_.reset();
        for (const auto& work : std::exchange(whenIdle_, {})) work();
        return;
    }
    if (mustWait()) return platform_.mainLoop.after(kDescriptorsInterval, [this] { routeNext(); });
    const Entry entry = std::move(waiting_.front());
    waiting_.pop_front();
    bytes_ -= entry.link.url.size();
    platform_.browser.locate();
    const Link& link = entry.link;
    router_.route(link.url, link.opener, link.activationToken,
                  [this, completion = entry.completion](bool opened) {
                      if (completion) completion(opened);
                      // By way of the main loop: a thousand links are no deeper than one.
                      platform_.mainLoop.after({}, [this] { routeNext(); });
                  });
}

bool LinkQueue::mustWait() {
    const auto now = platform_.mainLoop.now();
    if (descriptorsAreLeft(kDescriptorsOfLink)) {
        waitingSince_.reset();
        return false;
    }
    if (!waitingSince_) waitingSince_ = now;
    return now - *waitingSince_ < kDescriptorsLimit;
}

}  // namespace ferrivane
