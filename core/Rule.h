// One routing rule, as the user wrote it.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "core/support/Uuid.h"

namespace ferrivane {

struct Rule {
    // What the pattern is compared with, in the order in which kinds are offered to the user.
    enum class Kind { url, host, app };
    static constexpr std::array kAllKinds{Kind::url, Kind::host, Kind::app};

    Rule(Kind ruleKind, std::string pattern, std::string profileText,
         std::optional<std::string> note = std::nullopt);

    Uuid id;  // fresh for every rule made or read; never stored
    Kind kind;
    std::string match;    // the pattern as typed; Matcher trims it
    std::string profile;  // directory, display name or e-mail of a Chrome profile; not checked here
    std::optional<std::string> comment;

    bool operator==(const Rule&) const = default;
};

// The kind's spelling in rules.json: "url", "host" or "app".
std::string_view rawValue(Rule::Kind kind);
// Compared exactly; absent for any other spelling.
std::optional<Rule::Kind> kindFromRawValue(std::string_view text);

}  // namespace ferrivane
