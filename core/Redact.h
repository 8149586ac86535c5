// Shortens links before they reach the log. Pure; callable from any thread.
#pragma once

#include <string>
#include <string_view>

namespace ferrivane::Redact {

// With `full` the text unchanged. Else scheme and host followed by "/…" ("?" for a missing scheme),
// or, where there is no host, the first 24 characters as a person counts them, followed by "…" if
// there are more.
std::string url(std::string_view text, bool full);

}  // namespace ferrivane::Redact
