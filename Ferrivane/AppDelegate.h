// The resident application: receives links and requests from the session, and the person's own
// starts. A shell's application object calls it, in the order of the methods here. Main thread
// only.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Ferrivane/LinkQueue.h"
#include "Ferrivane/MenuBar.h"
#include "Ferrivane/RulesStore.h"
#include "Ferrivane/SettingsView.h"
#include "Ferrivane/platform/Platform.h"
#include "core/Config.h"
#include "core/Log.h"
#include "core/Opener.h"

namespace ferrivane {

class AppDelegate : public ApplicationEvents {
  public:
    // A longer link is refused; so is one that finds so many before it. No person sends those.
    static constexpr std::size_t longestLink = std::size_t{1} << 20;
    static constexpr std::size_t mostLinksWaiting = 4096;
    static constexpr std::size_t mostBytesWaiting = std::size_t{16} << 20;

    // The log and the platform's ports outlive this.
    AppDelegate(const Platform& platform, Log& sharedLog, bool isAgent,
                std::filesystem::path rulesFile = Config::fileURL());

    // Links may come from here on: the one that caused the launch must not be lost. Where the
    // process stands in the session.
    Session::Place applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    void showSettings(const std::optional<std::string>& activationToken = {});

    bool handleGetURL(const LinkEvent& event) override;
    void openFiles(const std::vector<std::string>& paths, const LinkEvent& event) override;
    void reopen(const std::optional<std::string>& activationToken) override;
    bool performAction(std::string_view name,
                       const std::optional<std::string>& activationToken) override;
    void sessionEnded() override;
    // Ends the main loop once every link that was taken is on its way.
    void terminate() override;

    // None when nothing is known of the sender, or when it is this process itself.
    std::optional<Opener> openerFromSenderOf(const LinkEvent& event) const;

  private:
    // Why a link is not taken, as the log says it.
    std::optional<std::string> refusal(const std::string& url) const;
    void handleAppURL(const std::optional<std::string>& activationToken);

    const Platform platform_;
    Log& log;
    const std::filesystem::path rulesFile_;
    LinkQueue queue_;
    MenuBar menuBar_;
    RulesStore store;
    std::optional<SettingsView> settings_;  // once it was shown
    bool receivedLink = false;
    bool sessionHasEnded_ = false;
    const bool agentMode;
};

}  // namespace ferrivane
