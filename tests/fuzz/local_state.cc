// Chrome's "Local State": another parser of JSON finds the same profiles.
#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>
#include <simdjson.h>

#include "core/ChromeProfiles.h"
#include "core/support/Text.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/MemoryFile.h"

namespace ferrivane::fuzz {
namespace {

using Json = nlohmann::json;
using Kind = ChromeProfiles::LoadError::Kind;

std::optional<std::string> textAt(const Json& entry, const char* key) {
    const auto found = entry.find(key);
    if (found == entry.end() || !found->is_string()) return std::nullopt;
    const auto text = found->get<std::string>();
    return text.empty() ? std::nullopt : std::optional(text);
}

// The profiles in the order of their directories; absent where there is no catalogue.
std::optional<std::vector<ChromeProfile>> profilesIn(const Json& document) {
    const auto memberOf = [](const Json& json, const char* key) {
        return json.is_object() && json.contains(key) ? json[key] : Json();
    };
    const Json cache = memberOf(memberOf(document, "profile"), "info_cache");
    if (!cache.is_object()) return std::nullopt;
    std::vector<ChromeProfile> profiles;
    for (const auto& [directory, entry] : cache.items()) {
        if (!entry.is_object()) continue;
        auto domain = textAt(entry, "hosted_domain");
        if (domain == "NO_HOSTED_DOMAIN") domain.reset();
        profiles.push_back({directory, textAt(entry, "name").value_or(directory),
                            textAt(entry, "user_name"), domain});
    }
    return profiles;
}

// Where one of the parsers has limits of its own, ends at a NUL, or skips a byte-order mark.
bool isOutsideComparison(std::string_view text, const std::string& detail) {
    return text.find('\0') != std::string_view::npos || text.starts_with("\uFEFF") ||
           std::ranges::any_of(
               std::array{simdjson::DEPTH_ERROR, simdjson::NUMBER_ERROR},
               [&](simdjson::error_code code) { return detail == simdjson::error_message(code); });
}

void checkResolve(const std::vector<ChromeProfile>& profiles) {
    for (const ChromeProfile& profile : profiles) {
        for (const auto& text : {profile.directory, profile.name, profile.email.value_or("")}) {
            if (Text::trim(text) != text) continue;  // the text of a rule is trimmed
            const auto found = ChromeProfiles::resolve(text, profiles);
            require(found.has_value() == !text.empty(), "each is found by each of its texts");
            require(!found || std::ranges::count(profiles, *found) == 1, "what is found is one");
            const auto spaced = ChromeProfiles::resolve(" \t" + text + "\n", profiles);
            require(found == spaced, "blanks around the text do not matter");
        }
        const auto found = ChromeProfiles::resolve(profile.directory, profiles);
        if (found && Text::trim(profile.directory) == profile.directory) {
            require(*found == profile, "the directory wins");
        }
    }
}

}  // namespace

void run(std::string_view input) {
    static const MemoryFile file;
    file.write(input);
    const auto profiles = ChromeProfiles::load(file.path());
    const Json document = Json::parse(input, nullptr, false);
    if (!profiles) {
        require(!profiles.error().description().empty(), "an error has words");
        require(profiles.error().kind != Kind::unreadable, "a file in memory can be read");
        if (isOutsideComparison(input, profiles.error().detail)) return;
        const bool isJson = profiles.error().kind == Kind::malformed;
        require(isJson == !document.is_discarded(), "what is JSON is JSON to both");
        require(!isJson || !profilesIn(document), "a catalogue is found by both");
        return;
    }
    require(!document.is_discarded(), "what is read is JSON to another parser");
    require(profilesIn(document) == *profiles, "both find the same profiles");
    checkResolve(*profiles);
}

}  // namespace ferrivane::fuzz
