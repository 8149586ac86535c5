#include "core/support/Uuid.h"

#include <cstring>
#include <random>
#include <string_view>

namespace ferrivane {

Uuid Uuid::random() {
    // Seeded from the system once per thread; asking the system for each of ten thousand rules
    // would take longer than reading them.
    thread_local std::mt19937_64 engine = [] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device(), device(), device()};
        return std::mt19937_64(seed);
    }();
    Uuid uuid;
    const std::array<std::uint64_t, 2> words{engine(), engine()};
    std::memcpy(uuid.bytes.data(), words.data(), uuid.bytes.size());
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);  // version 4
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);  // RFC variant
    return uuid;
}

std::string Uuid::text() const {
    constexpr std::string_view kDigits("0123456789ABCDEF");
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) result.push_back('-');
        result.push_back(kDigits[bytes[i] >> 4]);
        result.push_back(kDigits[bytes[i] & 0x0F]);
    }
    return result;
}

}  // namespace ferrivane
