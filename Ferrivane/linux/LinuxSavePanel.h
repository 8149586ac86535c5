// The toolkit's save panel.
#pragma once

#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/platform/SavePanel.h"

namespace ferrivane {

class LinuxSavePanel : public SavePanel {
  public:
    // The loop outlives this.
    explicit LinuxSavePanel(EventLoop& loop) : loop_(loop) {}

    // Returns at once. Where nothing can be shown the answer is that of a person who cancels, and
    // standard error says why.
    void show(const Question& question, std::function<void(Answer)> completion) override;

  private:
    EventLoop& loop_;
};

}  // namespace ferrivane
