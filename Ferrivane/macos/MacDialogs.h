// Alerts, one after another.
#pragma once

#import <Cocoa/Cocoa.h>

#include "Ferrivane/AlertQueue.h"
#include "Ferrivane/platform/Dialogs.h"

namespace ferrivane {

// Not shown yet. Main thread only.
NSAlert* alertOf(const LaunchFailureAlert& failure);

class MacDialogs : public Dialogs {
  public:
    // The loop outlives this.
    explicit MacDialogs(MainLoop& loop) : alerts_(loop, show) {}

    // Returns at once. The alert is modal then, while links go on coming and going.
    void showLaunchFailure(const LaunchFailureAlert& alert) override { alerts_.add(alert); }

  private:
    static void show(const LaunchFailureAlert& alert);

    AlertQueue alerts_;
};

}  // namespace ferrivane
