// The applications that Launch Services knows, and those that run.
#pragma once

#include "Ferrivane/macos/MacMainLoop.h"
#include "Ferrivane/platform/Applications.h"

namespace ferrivane {

class MacApplications : public Applications {
  public:
    // The loop outlives this.
    explicit MacApplications(MacMainLoop& loop) : loop_(loop) {}

    std::optional<std::filesystem::path> location(std::string_view bundleId) const override;
    std::optional<std::filesystem::path> executable(
        const std::filesystem::path& application) const override;
    std::optional<std::string> identifier(const std::filesystem::path& application) const override;
    std::optional<std::filesystem::path> handler(std::string_view scheme) const override;
    // Completes when the person has answered the system's own question.
    void setHandler(const std::filesystem::path& application, std::string_view scheme,
                    std::function<void(std::expected<void, PlatformError>)> completion) override;
    // None: nothing on a Mac overrides Launch Services.
    std::optional<std::string> overridingSetting(
        const std::filesystem::path&, const std::vector<std::string_view>&) const override {
        return std::nullopt;
    }
    std::vector<pid_t> running(std::string_view bundleId) const override;
    std::vector<Running> runningApplications() const override;
    std::optional<Opener> runningApplication(pid_t process,
                                             const std::string& startupId) const override;
    Bundle ownBundle() const override;
    std::string displayName(const std::filesystem::path& application) const override;
    bool comesBefore(const std::string& name, const std::string& other) const override;

  private:
    MacMainLoop& loop_;
};

}  // namespace ferrivane
