// The located Chrome as Linux lets us see and start it.
#pragma once

#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/HostSpawn.h"
#include "Ferrivane/platform/Browser.h"

namespace ferrivane {

class LinuxBrowser : public Browser {
  public:
    // Called with the process of a browser that was started by us, also as a relay that became it.
    using Started = std::function<void(pid_t process)>;

    // `locate` sets the location anew; without one nothing runs and nothing can be launched. Both
    // references outlive this.
    LinuxBrowser(const std::optional<ChromeLocation>& location, EventLoop& loop,
                 std::function<void()> locate, Started started, bool isSandboxed = false,
                 HostSpawn hostSpawn = HostSpawn())
        : location_(location),
          loop_(loop),
          locate_(std::move(locate)),
          started_(std::move(started)),
          isSandboxed_(isSandboxed),
          hostSpawn_(hostSpawn) {}

    void locate() override { locate_(); }

    // The listener of the singleton socket; else the process that SingletonLock names, if it is
    // alive on this host, ours and the located browser. In a sandbox: the first process of ours
    // that is a browser of this kind and, by its arguments and environment, has its files there.
    std::optional<pid_t> running() const override;
    bool isRunning(pid_t process) const override;
    void launch(const std::filesystem::path& location, const Arguments& arguments,
                std::function<void(std::expected<pid_t, PlatformError>)> completion) override;
    // Touches nothing of the browser's own.
    void openLink(const std::filesystem::path& location, const Arguments& link,
                  std::function<void(std::expected<pid_t, PlatformError>)> completion) override;
    std::expected<pid_t, PlatformError> startRelay(
        const std::filesystem::path& executable, const Arguments& arguments,
        std::function<void(int status)> completion) override;
    void abandonRelay(pid_t process) override;

  private:
    std::optional<pid_t> listener() const;
    std::optional<pid_t> lockOwner() const;
    std::optional<pid_t> visibleProcess() const;
    bool isBrowserProgram(pid_t process) const;
    bool hasItsFilesHere(pid_t process, const std::vector<std::string>& arguments) const;

    const std::optional<ChromeLocation>& location_;
    EventLoop& loop_;
    const std::function<void()> locate_;
    const Started started_;
    const bool isSandboxed_;
    const HostSpawn hostSpawn_;
};

}  // namespace ferrivane
