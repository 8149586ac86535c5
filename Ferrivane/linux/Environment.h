// The environment that the process was started with.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane {

// Empty when the variable is not set.
inline std::string environment(const char* variable) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "";
}

// The parts of a list such as $PATH, without empty ones.
inline std::vector<std::string> environmentList(const char* variable) {
    const std::string list = environment(variable);
    std::vector<std::string> parts;
    for (std::string_view rest = list; !rest.empty();) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        if (end > 0) parts.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return parts;
}

}  // namespace ferrivane
