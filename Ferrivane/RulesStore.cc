#include "Ferrivane/RulesStore.h"

#include <algorithm>
#include <cerrno>
#include <tuple>

#include "Ferrivane/ProfileSource.h"
#include "core/ChromeProfiles.h"
#include "core/Matcher.h"
#include "core/support/AtomicFile.h"
#include "core/support/ReadFile.h"

namespace ferrivane {

// Rules that read the same at the beginning or at the end of both lists are the same rules, so that
// whoever is about to change one still does.
static void keepIdentifiers(std::vector<Rule>& rules, const std::vector<Rule>& before) {
    const auto isSame = [](const Rule& rule, const Rule& other) {
        return std::tie(rule.kind, rule.match, rule.profile, rule.comment) ==
               std::tie(other.kind, other.match, other.profile, other.comment);
    };
    const std::size_t most = std::min(rules.size(), before.size());
    std::size_t first = 0;
    for (; first < most && isSame(rules[first], before[first]); ++first) {
        rules[first].id = before[first].id;
    }
    for (std::size_t last = 1; last <= most - first; ++last) {
        Rule& rule = rules[rules.size() - last];
        const Rule& other = before[before.size() - last];
        if (!isSame(rule, other)) break;
        rule.id = other.id;
    }
}

RulesStore::RulesStore(const Platform& platform, Log& log, std::filesystem::path rulesFile)
    : platform_(platform), log_(log), rulesFile_(std::move(rulesFile)) {}

void RulesStore::reload() {
    loading_ = true;
    setProblem(std::nullopt);
    if (auto config = read()) {
        if (isUnsaved_) log_.warn("edits that could not be saved gave way to rules.json as it is");
        keepIdentifiers(config->rules, config_.rules);
        setConfig(std::move(*config));
        isUnsaved_ = false;
    } else {
        setProblem("rules.json: " + config.error().description());
    }
    loading_ = false;

    willChange.tell();
    platform_.browser.locate();
    helper_ = HelperScript::state(platform_);
    ProfileSource::load(
        platform_, [this, alive = std::weak_ptr(alive_)](const ProfileSource::Profiles& profiles) {
            if (alive.expired()) return;
            willChange.tell();
            profiles_ = profiles.value_or(std::vector<ChromeProfile>());
            // Without a script the profiles cannot be read; the banner about it says so already.
            const bool isExpected =
                helper_ == HelperScript::State::missing || helper_ == HelperScript::State::outdated;
            if (!profiles && !isExpected) setProblem("Chrome profiles: " + profiles.error());
        });
}

void RulesStore::reloadIfChanged() {
    if (isUnsaved_) return;
    const auto text = readFile(rulesFile_);
    if (text && *text != seenText_) reload();
}

std::expected<Config, ConfigError> RulesStore::read() {
    knownText_.reset();
    seenText_.reset();
    if (const auto made = Config::ensureExists(rulesFile_); !made) {
        return std::unexpected(made.error());
    }
    auto text = readFile(rulesFile_);
    if (!text) return std::unexpected(ConfigError{.fileError = text.error()});
    auto config = Config::decode(*text);
    if (config) knownText_ = *text;
    seenText_ = std::move(*text);
    return config;
}

void RulesStore::setConfig(Config config) {
    willChange.tell();
    config_ = std::move(config);
    if (!loading_) save();
}

void RulesStore::save() {
    const auto kept = keepTextOfOthers();
    auto saved =
        kept ? config_.save(rulesFile_) : std::unexpected(ConfigError{.fileError = kept.error()});
    isUnsaved_ = !saved;
    if (saved) {
        knownText_ = seenText_ = config_.encode().value_or("");
        setProblem(std::nullopt);
    } else {
        setProblem("cannot save rules.json: " + saved.error().description());
    }
}

// What somebody else has written, and is not shown here, must not be lost by our save: the newest
// of it is in rules.json.bak, what that held before in rules.json.bak.1 and so on.
std::expected<void, FileError> RulesStore::keepTextOfOthers() {
    const auto text = readFile(rulesFile_);
    const bool isMissing = !text && text.error().code == ENOENT;
    if (isMissing || (text && (*text == knownText_ || *text == keptText_))) return {};
    const std::filesystem::path copy = rulesFile_.string() + ".bak";
    std::error_code error;
    const auto kindOf = [&](const std::filesystem::path& path) {
        return std::filesystem::symlink_status(path, error).type();
    };
    using enum std::filesystem::file_type;
    std::filesystem::path older = copy;
    auto kind = kindOf(older);
    for (int number = 1; kind != not_found && kind != none; ++number) {
        older = copy.string() + "." + std::to_string(number);
        kind = kindOf(older);
    }
    // Where one name may not be looked at, none may.
    const auto refused = [&] {
        return std::unexpected(FileError{FileError::Operation::replace, copy, error.value()});
    };
    if (kind == none) return refused();
    if (older != copy) {
        std::filesystem::rename(copy, older, error);
        if (error) return refused();
    }
    if (text) {
        if (auto written = AtomicFile::write(copy, *text); !written) return written;
        keptText_ = *text;
    } else {
        // A link stays; what it leads to makes room.
        auto unreadable = std::filesystem::canonical(rulesFile_, error);
        if (error) unreadable = rulesFile_;
        std::filesystem::rename(unreadable, copy, error);
        if (error) return refused();
    }
    log_.warn("rules.json was changed elsewhere; what it said is kept in " + copy.string());
    return {};
}

Uuid RulesStore::addRule() {
    Rule rule(Rule::kAllKinds.front(), "", config_.defaultProfile);
    const Uuid id = rule.id;
    Config config = config_;
    config.rules.push_back(std::move(rule));
    setConfig(std::move(config));
    return id;
}

void RulesStore::removeRule(const Uuid& id) {
    Config config = config_;
    std::erase_if(config.rules, [&](const Rule& rule) { return rule.id == id; });
    setConfig(std::move(config));
}

void RulesStore::installHelper() {
    log_.info("Install Helper pressed");
    HelperScript::install(
        platform_, log_,
        [this, alive = std::weak_ptr(alive_)](const HelperScript::Result& installed) {
            if (alive.expired()) return;
            if (installed) {
                setProblem(std::nullopt);
            } else if (installed.error().kind == HelperScript::HelperError::Kind::cancelled) {
                log_.info("helper install cancelled");
            } else {
                const std::string description = installed.error().description();
                log_.error("helper install failed: " + description);
                setProblem(description);
            }
            reload();
        });
}

void RulesStore::revealHelper() const {
    HelperScript::revealForManualInstall(platform_, log_);
}

std::pair<Decision, std::optional<ChromeProfile>> RulesStore::decide(
    const std::string& url, const std::optional<Opener>& opener) const {
    Decision decision = Matcher::decide(url, opener, config_);
    auto profile = ChromeProfiles::resolve(decision.profile, profiles_);
    return {std::move(decision), std::move(profile)};
}

void RulesStore::setProblem(std::optional<std::string> problem) {
    willChange.tell();
    problem_ = std::move(problem);
}

}  // namespace ferrivane
