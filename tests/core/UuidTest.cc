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

TEST(Uuid, TextHasItsDigitsInFiveGroups) {
    const Uuid uuid{
        {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0, 0x0F, 0xF0, 0xFF, 0xA5, 1, 2, 3}};
    EXPECT_EQ(uuid.text(), "01234567-89AB-CDEF-000F-F0FFA5010203");
}

}  // namespace
}  // namespace ferrivane
