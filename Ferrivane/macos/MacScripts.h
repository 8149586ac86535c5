// The Application Scripts folder, whose scripts run outside the sandbox.
#pragma once

#include "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/platform/Scripts.h"

namespace ferrivane {

class MacScripts : public Scripts {
  public:
    // The loop outlives this.
    explicit MacScripts(MacMainLoop& loop) : loop_(loop) {}

    std::optional<std::filesystem::path> directory() const override;
    // Nothing: the system makes it, and forbids us to.
    std::expected<void, PlatformError> makeDirectory() override { return {}; }
    std::optional<std::filesystem::path> bundledHelper() const override;
    std::filesystem::path temporaryDirectory() const override;
    void run(const std::filesystem::path& script, const std::vector<std::string>& arguments,
             const std::optional<std::string>& activationToken,
             std::function<void(std::expected<void, PlatformError>)> completion) override;
    void select(const std::filesystem::path& file) override;
    void openFolder(const std::filesystem::path& folder) override;

  private:
    MacMainLoop& loop_;
};

}  // namespace ferrivane
