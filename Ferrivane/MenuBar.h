// The optional icon in the menu bar, by which the application can be reached while it has no
// window. Main thread only.
#pragma once

#include <functional>

#include "Ferrivane/platform/UserInterface.h"
#include "core/Log.h"

namespace ferrivane {

class MenuBar {
  public:
    static constexpr std::string_view visibilityKey = "showMenuBarIcon";

    // Both references outlive this. `quit` ends the application.
    MenuBar(UserInterface& interface, Log& log, std::function<void()> quit)
        : interface_(interface), log_(log), quit_(std::move(quit)) {}

    std::function<void()> onSettings;

    // Shows the icon unless it is shown already, or removes it.
    void setVisible(bool visible);

    void showSettings() const;
    void editRules() const;
    void showLog() const;

    static StatusItem item();

  private:
    void perform(Command command) const;
    void open(const std::filesystem::path& file) const;

    UserInterface& interface_;
    Log& log_;
    const std::function<void()> quit_;
    bool isVisible_ = false;
};

}  // namespace ferrivane
