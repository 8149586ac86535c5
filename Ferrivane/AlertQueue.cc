#include "Ferrivane/AlertQueue.h"

namespace ferrivane {

void AlertQueue::add(const LaunchFailureAlert& alert) {
    if (alerts_.size() == mostWaiting) return;
    alerts_.push_back(alert);
    if (alerts_.size() == 1) loop_.after({}, [this] { showNext(); });
}

void AlertQueue::showNext() {
    show_(alerts_.front());
    alerts_.pop_front();
    if (!alerts_.empty()) loop_.after({}, [this] { showNext(); });
}

}  // namespace ferrivane
