#include "core/ChromeProfiles.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include <simdjson.h>

#include "core/port/Paths.h"
#include "core/support/ReadFile.h"
#include "core/support/Text.h"

namespace ferrivane::ChromeProfiles {
namespace {

using simdjson::dom::element;
using simdjson::dom::object;

std::optional<element> lastValue(const object& from, std::string_view key) {
    std::optional<element> found;
    for (const auto [name, value] : from) {
        if (name == key) found = value;
    }
    return found;
}

std::optional<object> objectAt(const object& from, std::string_view key) {
    const auto value = lastValue(from, key);
    if (!value || !value->is_object()) return std::nullopt;
    return value->get_object().value_unsafe();
}

// The member's text; absent when it is missing, empty or no string.
std::optional<std::string> textAt(const object& from, std::string_view key) {
    const auto value = lastValue(from, key);
    if (!value || !value->is_string()) return std::nullopt;
    const std::string_view text = value->get_string().value_unsafe();
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

ChromeProfile profileFrom(std::string_view directory, const object& entry) {
    ChromeProfile profile;
    profile.directory = directory;
    profile.name = textAt(entry, "name").value_or(profile.directory);
    profile.email = textAt(entry, "user_name");
    profile.hostedDomain = textAt(entry, "hosted_domain");
    if (profile.hostedDomain == "NO_HOSTED_DOMAIN") profile.hostedDomain.reset();
    return profile;
}

// Sorts, and of profiles with one directory keeps the last.
void order(std::vector<ChromeProfile>& profiles) {
    std::ranges::reverse(profiles);
    std::stable_sort(
        profiles.begin(), profiles.end(),
        [](const ChromeProfile& a, const ChromeProfile& b) { return a.directory < b.directory; });
    const auto repeated = std::ranges::unique(profiles, {}, &ChromeProfile::directory);
    profiles.erase(repeated.begin(), repeated.end());
}

// Keeps its buffers from link to link; in a process of many links that is most of the time that
// parsing takes.
simdjson::dom::parser& parser() {
    thread_local simdjson::dom::parser kept;
    return kept;
}

}  // namespace

std::string LoadError::description() const {
    switch (kind) {
        case Kind::unreadable:
            return fileError.description();
        case Kind::notJson:
            return "not JSON: " + detail;
        case Kind::malformed:
            return "no profile.info_cache in " + path.string();
    }
    return detail;
}

std::filesystem::path localStateURL() {
    return Paths::chromeUserDataDirectory() / "Local State";
}

std::expected<std::vector<ChromeProfile>, LoadError> load(const std::filesystem::path& path) {
    const auto text = readFile(path, simdjson::SIMDJSON_PADDING);
    if (!text) {
        return std::unexpected(LoadError{LoadError::Kind::unreadable, path, text.error()});
    }
    constexpr bool kTextIsPadded = false;  // no copy needed
    element document;
    if (const auto error =
            parser().parse(text->data(), text->size(), kTextIsPadded).get(document)) {
        return std::unexpected(LoadError{.kind = LoadError::Kind::notJson,
                                         .path = path,
                                         .detail = simdjson::error_message(error)});
    }
    std::optional<object> cache;
    if (document.is_object()) {
        if (const auto profile = objectAt(document.get_object().value_unsafe(), "profile")) {
            cache = objectAt(*profile, "info_cache");
        }
    }
    if (!cache) return std::unexpected(LoadError{LoadError::Kind::malformed, path});

    std::vector<ChromeProfile> profiles;
    for (const auto [directory, entry] : *cache) {
        if (entry.is_object()) {
            profiles.push_back(profileFrom(directory, entry.get_object().value_unsafe()));
        } else {
            std::erase_if(profiles, [name = directory](const ChromeProfile& p) {
                return p.directory == name;
            });
        }
    }
    order(profiles);
    return profiles;
}

void releaseBuffers() {
    parser() = simdjson::dom::parser();
}

std::optional<ChromeProfile> resolve(std::string_view requested,
                                     const std::vector<ChromeProfile>& profiles) {
    const std::string_view wanted = Text::trim(requested);
    if (wanted.empty()) return std::nullopt;
    const std::string folded = Text::foldCase(wanted);
    const auto first = [&](auto isMatch) -> std::optional<ChromeProfile> {
        const auto found = std::ranges::find_if(profiles, isMatch);
        return found == profiles.end() ? std::nullopt : std::optional(*found);
    };
    if (auto found = first([&](const ChromeProfile& p) { return p.directory == wanted; })) {
        return found;
    }
    if (auto found =
            first([&](const ChromeProfile& p) { return Text::foldCase(p.name) == folded; })) {
        return found;
    }
    return first(
        [&](const ChromeProfile& p) { return p.email && Text::foldCase(*p.email) == folded; });
}

std::optional<ChromeProfile> bareDirectory(std::string_view requested) {
    const std::string_view wanted = Text::trim(requested);
    const std::string directory(wanted);
    if (wanted == "Default") return ChromeProfile{directory, directory, {}, {}};

    constexpr std::string_view kPrefix = "Profile ";
    if (!wanted.starts_with(kPrefix)) return std::nullopt;
    std::string_view number = wanted.substr(kPrefix.size());
    // from_chars takes a minus sign only.
    if (number.starts_with('+') && !number.starts_with("+-")) number.remove_prefix(1);
    std::int64_t value = 0;
    const char* const end = number.data() + number.size();
    const auto [parsed, error] = std::from_chars(number.data(), end, value);
    if (error != std::errc() || parsed != end) return std::nullopt;
    return ChromeProfile{directory, directory, {}, {}};
}

}  // namespace ferrivane::ChromeProfiles
