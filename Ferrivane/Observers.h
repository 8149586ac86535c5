// Those who want to know before something changes. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace ferrivane {

class Observers {
  public:
    // While it lives the observer is told; it may outlive the observed.
    using Subscription = std::shared_ptr<void>;

    [[nodiscard]] Subscription add(std::function<void()> willChange) {
        auto entry = std::make_shared<std::function<void()>>(std::move(willChange));
        entries_.emplace(++last_, entry);
        return entry;
    }

    void tell() {
        std::erase_if(entries_, [](const auto& entry) { return entry.second.expired(); });
        for (const auto& [number, entry] : std::map(entries_)) {
            if (const auto observer = entry.lock()) (*observer)();
        }
    }

  private:
    std::map<std::uint64_t, std::weak_ptr<std::function<void()>>> entries_;  // in their order
    std::uint64_t last_ = 0;
};

}  // namespace ferrivane
