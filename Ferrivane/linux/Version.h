// The version of this build.
#pragma once

#include <string_view>

namespace ferrivane {

// In a source of its own, so that a test can link a program of another version.
std::string_view buildVersion();

}  // namespace ferrivane
