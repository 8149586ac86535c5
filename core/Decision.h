// The outcome of routing one link: the profile to open and why.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "core/Rule.h"

namespace ferrivane {

struct Decision {
    std::string profile;                      // the rule's or the default one, as it is
    std::optional<std::ptrdiff_t> ruleIndex;  // counted from 0; people are shown it from 1
    std::optional<Rule> rule;                 // a copy of the winning rule

    bool isDefault() const { return !rule.has_value(); }

    bool operator==(const Decision&) const = default;
};

}  // namespace ferrivane
