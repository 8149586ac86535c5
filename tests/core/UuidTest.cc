#include <set>

#include <gtest/gtest.h>

#include "core/support/Uuid.h"

namespace ferrivane {
namespace {

TEST(Uuid, IsOfVersionFourAndNeverTheSame) {
    std::set<std::array<std::uint8_t, 16>> seen;
    for (int i = 0; i < 10'000; ++i) {
        const Uuid uuid = Uuid::random();
        EXPECT_EQ(uuid.bytes[6] >> 4, 4);
        EXPECT_EQ(uuid.bytes[8] >> 6, 2);
        seen.insert(uuid.bytes);
    }
    EXPECT_EQ(seen.size(), 10'000U);
    const Uuid uuid = Uuid::random();
    const Uuid copy = uuid;
    EXPECT_EQ(copy, uuid);
}

}  // namespace
}  // namespace ferrivane
