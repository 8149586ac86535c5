// The scripts folder on Linux: $XDG_DATA_HOME/ferrivane/scripts, ~/.local/share by default.
#pragma once

#include <chrono>

#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/HostSpawn.h"
#include "Ferrivane/platform/Scripts.h"

namespace ferrivane {

class LinuxScripts : public Scripts {
  public:
    // Longer than a script of ours takes, which gives up by itself. One that hangs must not hold up
    // the links behind.
    static constexpr std::chrono::seconds longestRun{40};

    // The loop outlives this.
    explicit LinuxScripts(EventLoop& loop, HostSpawn hostSpawn = HostSpawn(),
                          std::chrono::milliseconds limit = longestRun)
        : loop_(loop), hostSpawn_(hostSpawn), limit_(limit) {}

    std::optional<std::filesystem::path> directory() const override;
    // With mode 0700, and so every missing folder above it.
    std::expected<void, PlatformError> makeDirectory() override;
    std::optional<std::filesystem::path> bundledHelper() const override;
    std::filesystem::path temporaryDirectory() const override;
    void run(const std::filesystem::path& script, const std::vector<std::string>& arguments,
             const std::optional<std::string>& activationToken,
             std::function<void(std::expected<void, PlatformError>)> completion) override;
    void select(const std::filesystem::path& file) override;
    void openFolder(const std::filesystem::path& folder) override;

  private:
    EventLoop& loop_;
    const HostSpawn hostSpawn_;
    const std::chrono::milliseconds limit_;
};

}  // namespace ferrivane
