// A random 128-bit identifier (RFC 9562, version 4).
#pragma once

#include <array>
#include <cstdint>

namespace ferrivane {

struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh one; callable from any thread.
    static Uuid random();

    bool operator==(const Uuid&) const = default;
};

}  // namespace ferrivane
