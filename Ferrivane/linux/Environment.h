// The environment that the process was started with.
#pragma once

#include <cstdlib>
#include <string>

namespace ferrivane {

// Empty when the variable is not set.
inline std::string environment(const char* variable) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "";
}

}  // namespace ferrivane
