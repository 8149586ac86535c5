// The desktop's registry of applications, by desktop entries.
#pragma once

#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/platform/Applications.h"

namespace ferrivane {

class LinuxApplications : public Applications {
  public:
    // Both references outlive this.
    LinuxApplications(const DesktopEntries& entries, const std::optional<ChromeLocation>& chrome)
        : entries_(entries), chrome_(chrome) {}

    std::optional<std::filesystem::path> location(std::string_view bundleId) const override;
    std::optional<std::filesystem::path> executable(
        const std::filesystem::path& application) const override;
    std::optional<std::string> identifier(const std::filesystem::path& application) const override;
    std::optional<std::filesystem::path> handler(std::string_view scheme) const override;
    void setHandler(const std::filesystem::path& application, std::string_view scheme,
                    std::function<void(std::expected<void, PlatformError>)> completion) override;
    std::optional<std::string> overridingSetting(
        const std::filesystem::path& application,
        const std::vector<std::string_view>& unchanged) const override;
    std::vector<pid_t> running(std::string_view bundleId) const override;
    std::vector<Running> runningApplications() const override;
    std::optional<Opener> runningApplication(pid_t process,
                                             const std::string& startupId) const override;
    // The bundle is an installed build that a visible desktop entry starts.
    Bundle ownBundle() const override;
    // The entry's name.
    std::string displayName(const std::filesystem::path& application) const override;
    bool comesBefore(const std::string& name, const std::string& other) const override;

  private:
    const DesktopEntries& entries_;
    const std::optional<ChromeLocation>& chrome_;
};

}  // namespace ferrivane
