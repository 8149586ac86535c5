// One profile of Chrome's catalogue.
#pragma once

#include <optional>
#include <string>

namespace ferrivane {

struct ChromeProfile {
    std::string directory;  // what Chrome accepts after "--profile-directory="
    std::string name;       // never empty: falls back to the directory
    std::optional<std::string> email;
    std::optional<std::string> hostedDomain;  // of a managed account

    bool operator==(const ChromeProfile&) const = default;
};

}  // namespace ferrivane
