// The model behind the settings window: the rules being edited, what can be chosen for them, and
// one line about what went wrong. Every change of the rules is saved at once, in the same call.
// Main thread only.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Ferrivane/HelperScript.h"
#include "Ferrivane/Observers.h"
#include "Ferrivane/platform/Platform.h"
#include "core/ChromeProfile.h"
#include "core/Config.h"
#include "core/Decision.h"
#include "core/Log.h"
#include "core/Opener.h"
#include "core/support/FileError.h"

namespace ferrivane {

class RulesStore {
  public:
    // Reads nothing yet. The log and the platform's ports outlive this.
    RulesStore(const Platform& platform, Log& log,
               std::filesystem::path rulesFile = Config::fileURL());

    const std::filesystem::path& fileURL() const { return rulesFile_; }

    // Told before each change of what the next four return.
    Observers willChange;
    const Config& config() const { return config_; }
    const std::vector<ChromeProfile>& profiles() const { return profiles_; }
    const std::optional<std::string>& problem() const { return problem_; }
    HelperScript::State helper() const { return helper_; }

    // Reads the rules, which are made if there are none, the state of the helper script and
    // Chrome's profiles. Rules that cannot be read leave those that are shown.
    void reload();
    // The same, if the rules' file now says something else than what is shown. Not as long as an
    // edit could not be saved: it is nowhere but here.
    void reloadIfChanged();

    void setConfig(Config config);
    // The new rule stands at the end, without a pattern.
    Uuid addRule();
    void removeRule(const Uuid& id);

    void installHelper();
    // Shows the folders between which the person can copy it by hand.
    void revealHelper() const;

    std::pair<Decision, std::optional<ChromeProfile>> decide(
        const std::string& url, const std::optional<Opener>& opener) const;

  private:
    void save();
    std::expected<void, FileError> keepTextOfOthers();
    std::expected<Config, ConfigError> read();
    void setProblem(std::optional<std::string> problem);

    const Platform platform_;
    Log& log_;
    const std::filesystem::path rulesFile_;
    Config config_;
    std::vector<ChromeProfile> profiles_;
    std::optional<std::string> problem_;
    HelperScript::State helper_ = HelperScript::State::notNeeded;
    bool loading_ = false;
    bool isUnsaved_ = false;
    std::optional<std::string> knownText_;  // of the file, as it was last read well or written
    std::optional<std::string> seenText_;   // as it was last read, well or not, or written
    std::optional<std::string> keptText_;   // of others, last put aside
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  // for completions
};

}  // namespace ferrivane
