// A random 128-bit identifier (RFC 9562, version 4).
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace ferrivane {

struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh one; callable from any thread.
    static Uuid random();

    // "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" in upper-case hexadecimal digits.
    std::string text() const;

    bool operator==(const Uuid&) const = default;
};

}  // namespace ferrivane
