// A save panel for one file.
#pragma once

#include <functional>

#include "Ferrivane/platform/SavePanel.h"

namespace ferrivane {

// Returns at once; `answered` is called when the person has answered.
void showSavePanelWindow(const SavePanel::Question& question,
                         std::function<void(const SavePanel::Answer&)> answered);

}  // namespace ferrivane
