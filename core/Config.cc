#include "core/Config.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "core/ConfigReader.h"
#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"
#include "core/support/ReadFile.h"

namespace ferrivane {
namespace {

constexpr std::array<std::string_view, Rule::kAllKinds.size()> kRawValues{"url", "host", "app"};

auto findRule(std::vector<Rule>& rules, const Uuid& id) {
    return std::ranges::find(rules, id, &Rule::id);
}

ConfigError fromFile(FileError error) {
    return {.kind = ConfigError::Kind::file, .fileError = std::move(error)};
}

}  // namespace

Rule::Rule(Kind ruleKind, std::string pattern, std::string profileText,
           std::optional<std::string> note)
    : id(Uuid::random()),
      kind(ruleKind),
      match(std::move(pattern)),
      profile(std::move(profileText)),
      comment(std::move(note)) {}

std::string_view rawValue(Rule::Kind kind) {
    return kRawValues[static_cast<std::size_t>(kind)];
}

std::optional<Rule::Kind> kindFromRawValue(std::string_view text) {
    const auto found = std::ranges::find(kRawValues, text);
    if (found == kRawValues.end()) return std::nullopt;
    return Rule::kAllKinds[static_cast<std::size_t>(found - kRawValues.begin())];
}

std::string ConfigError::description() const {
    switch (kind) {
        case Kind::file:
            return fileError.description();
        case Kind::syntax:
            return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " +
                   detail;
        case Kind::value:
            return "line " + std::to_string(line) + ": " + detail;
        case Kind::encoding:
            return detail;
    }
    return detail;
}

const std::filesystem::path& Config::fileURL() {
    static const std::filesystem::path path = Paths::rulesFile();
    return path;
}

std::expected<Config, ConfigError> Config::load(const std::filesystem::path& path) {
    const auto text = readFile(path);
    if (!text) return std::unexpected(fromFile(text.error()));
    return decode(*text);
}

std::expected<Config, ConfigError> Config::decode(std::string_view json) {
    return readConfig(json);
}

std::expected<void, ConfigError> Config::save(const std::filesystem::path& path) const {
    const auto text = encode();
    if (!text) return std::unexpected(text.error());
    if (auto written = AtomicFile::write(path, *text); !written) {
        return std::unexpected(fromFile(written.error()));
    }
    return {};
}

std::expected<std::string, ConfigError> Config::encode() const {
    using nlohmann::json;
    json list = json::array();
    for (const Rule& rule : rules) {
        json item = {
            {"kind", rawValue(rule.kind)}, {"match", rule.match}, {"profile", rule.profile}};
        if (rule.comment) item["comment"] = *rule.comment;
        list.push_back(std::move(item));
    }
    const json document = {{"defaultProfile", defaultProfile},
                           {"logFullURLs", logFullURLs},
                           {"rules", std::move(list)}};
    try {
        constexpr int kIndent = 2;
        return document.dump(kIndent) + "\n";  // the library's objects are sorted by key
    } catch (const json::type_error&) {
        return std::unexpected(ConfigError{.kind = ConfigError::Kind::encoding,
                                           .detail = "a text of the configuration is not UTF-8"});
    }
}

std::expected<bool, ConfigError> Config::ensureExists(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(path, error))) return false;
    if (auto saved = Config().save(path); !saved) return std::unexpected(saved.error());
    return true;
}

void Config::moveRule(const Uuid& id, std::ptrdiff_t offset) {
    const auto rule = findRule(rules, id);
    if (rule == rules.end()) return;
    const std::ptrdiff_t position = rule - rules.begin();
    const auto count = static_cast<std::ptrdiff_t>(rules.size());
    if (offset < -position || offset >= count - position) return;
    std::iter_swap(rule, rule + offset);
}

void Config::moveRule(const Uuid& id, const std::optional<Uuid>& target) {
    if (target == id) return;
    const auto rule = findRule(rules, id);
    if (rule == rules.end()) return;
    auto place = target ? findRule(rules, *target) : rules.end();
    // Rotating keeps everything between the two in order, and the rule takes the target's place.
    if (place == rules.end()) place = rules.end() - 1;
    if (rule < place) {
        std::rotate(rule, rule + 1, place + 1);
    } else {
        std::rotate(place, rule, rule + 1);
    }
}

}  // namespace ferrivane
