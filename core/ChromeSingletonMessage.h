// What a second start of Chrome says to the running one, and the answer (Chromium's
// process_singleton_posix.cc). Pure; callable from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::ChromeSingletonMessage {

// The largest message, in bytes, that Chrome takes. It cuts a longer one and acknowledges it all
// the same, so whoever sends must check.
inline constexpr std::size_t maximumLength = 32768;

struct Reply {
    enum class Kind { ack, shutdown, unexpected };

    Kind kind = Kind::unexpected;
    std::string text;  // unexpected: what was received, trimmed

    // Any bytes; invalid UTF-8 becomes U+FFFD.
    static Reply from(std::string_view bytes);

    // "ack", "shutdown" or unexpected("text").
    std::string description() const;

    bool operator==(const Reply&) const = default;
};

// Items are neither escaped nor checked.
std::string encode(std::string_view currentDirectory, const std::vector<std::string>& argv);

}  // namespace ferrivane::ChromeSingletonMessage
