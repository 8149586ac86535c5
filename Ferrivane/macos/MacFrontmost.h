// The application in front, as the workspace knows it.
#pragma once

#include "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/platform/Frontmost.h"

namespace ferrivane {

class MacFrontmost : public Frontmost {
  public:
    // The loop outlives this.
    explicit MacFrontmost(MacMainLoop& loop) : loop_(loop) {}

    std::optional<Application> current() const override;
    // Always false before macOS 14, which brought it.
    bool activateHandedOver(pid_t process) override;
    bool activate(pid_t process) override;
    void open(const std::filesystem::path& location,
              std::function<void(std::expected<void, PlatformError>)> completion) override;

  private:
    MacMainLoop& loop_;
};

}  // namespace ferrivane
