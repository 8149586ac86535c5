#include "Ferrivane/LinkQueue.h"

#include <utility>

namespace ferrivane {

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
        for (const auto& work : std::exchange(whenIdle_, {})) work();
        return;
    }
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

}  // namespace ferrivane
