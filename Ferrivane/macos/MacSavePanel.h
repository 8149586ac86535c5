// The system's save panel, which also lets a sandboxed program write where the person says.
#pragma once

#include "Ferrivane/platform/SavePanel.h"

namespace ferrivane {

class MacSavePanel : public SavePanel {
  public:
    // Modal: the completion is called before this returns.
    void show(const Question& question, std::function<void(Answer)> completion) override;
};

}  // namespace ferrivane
