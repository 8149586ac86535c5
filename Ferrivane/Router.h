// Carries one link from its arrival to Chrome and writes the log's two lines about it. Keeps no
// cache: every link reads the rules and Chrome's catalogue afresh. Main thread only.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/platform/Platform.h"
#include "core/ChromeProfile.h"
#include "core/Config.h"
#include "core/Decision.h"
#include "core/Log.h"
#include "core/Opener.h"

namespace ferrivane {

class Router {
  public:
    // Called once, on the main thread, when the link is open or has failed for good; by then the
    // outcome is logged and a failure shown.
    using Completion = std::function<void(bool opened)>;

    // The log and the platform's ports outlive the router and every link under way.
    Router(const Platform& platform, Log& sharedLog,
           std::filesystem::path rulesFile = Config::fileURL());

    // Returns at once; the launch may finish later. A token lets Chrome come to the front.
    void route(const std::string& url, const std::optional<Opener>& opener,
               const std::optional<std::string>& activationToken = std::nullopt,
               const Completion& completion = {});

  private:
    Config loadConfig() const;
    void loadProfiles(const std::function<void(std::vector<ChromeProfile>)>& completion) const;

    const Platform platform_;
    Log& log;
    const std::filesystem::path rulesFile_;
};

// What the person is told when a link could not be opened.
LaunchFailureAlert launchFailureAlert(const std::string& url,
                                      const ChromeLauncher::LaunchError& error);

}  // namespace ferrivane
