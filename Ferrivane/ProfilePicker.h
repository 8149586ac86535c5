// The choice of a Chrome profile, for a rule or for links that no rule matches. Pure.
#pragma once

#include <string>
#include <vector>

#include "core/ChromeProfile.h"

namespace ferrivane::ProfilePicker {

struct Choice {
    std::string title;
    std::string value;  // what choosing it writes into the rule

    bool operator==(const Choice&) const = default;
};

struct Choices {
    std::vector<Choice> all;
    std::size_t current = 0;

    bool operator==(const Choices&) const = default;
};

// The profiles in their order. A selection that is none of them is one more choice, and the current
// one, so that it is seen and not replaced in silence.
Choices choices(const std::string& selection, const std::vector<ChromeProfile>& profiles);

}  // namespace ferrivane::ProfilePicker
