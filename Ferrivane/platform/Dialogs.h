// What is told to the person at the desktop. Main thread only.
#pragma once

#include <string>
#include <vector>

namespace ferrivane {

// A link that could not be opened, as an alert shows it.
struct LaunchFailureAlert {
    std::string title;
    std::string reason;  // the error's description
    std::string link;    // in full
    std::string informativeText;
    std::vector<std::string> buttons;  // the first is the default

    // Whether the informative text is to scroll: in full it might be higher than the screen.
    bool isLong() const { return informativeText.size() > mostOnScreen; }
    static constexpr std::size_t mostOnScreen = 1000;
};

class Dialogs {
  public:
    virtual ~Dialogs() = default;

    virtual void showLaunchFailure(const LaunchFailureAlert& alert) = 0;
};

}  // namespace ferrivane
