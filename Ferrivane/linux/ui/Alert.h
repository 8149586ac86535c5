// The alert about a link that could not be opened.
#pragma once

#include <QDialog>
#include <functional>

#include "Ferrivane/platform/Dialogs.h"

namespace ferrivane {

class Alert : public QDialog {
  public:
    // `answered` receives the number of the chosen button, the last one when the window was closed
    // otherwise.
    Alert(const LaunchFailureAlert& alert, std::function<void(std::size_t button)> answered);

  protected:
    void done(int result) override;

  private:
    std::size_t button_;
    std::function<void(std::size_t button)> answered_;
};

}  // namespace ferrivane
