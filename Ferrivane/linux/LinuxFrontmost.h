// The front window as an X11 window manager tells it. On Wayland nobody tells.
#pragma once

#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/platform/Frontmost.h"

namespace ferrivane {

class LinuxFrontmost : public Frontmost {
  public:
    // The entries outlive this.
    explicit LinuxFrontmost(const DesktopEntries& entries) : entries_(entries) {}

    std::optional<Application> current() const override;
    // X11 knows no activation that one application hands to another.
    bool activateHandedOver(pid_t) override { return false; }
    bool activate(pid_t process) override;
    // Starting a browser's entry to activate it would open a window, so this only succeeds.
    void open(const std::filesystem::path& location,
              std::function<void(std::expected<void, PlatformError>)> completion) override;

  private:
    const DesktopEntries& entries_;
};

}  // namespace ferrivane
