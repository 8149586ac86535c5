// The outcome of an operation as a text, so that a table can hold successes and failures alike.
#pragma once

#include <expected>
#include <string>

namespace ferrivane::test {

// "ok", or the error's description.
template<typename Value, typename Error>
std::string outcomeOf(const std::expected<Value, Error>& result) {
    return result ? std::string("ok") : result.error().description();
}

}  // namespace ferrivane::test
