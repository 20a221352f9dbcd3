#include <Vel/byteMix.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

// The rule, written out.
U32 mixed(std::initializer_list<U8> bytes) {
    U32 h = 0;
    for (const U8 byte : bytes) {
        h += byte;
        h += h << 10;
        h ^= h >> 6;
    }
    h += h << 3;
    h ^= h >> 11;
    h += h << 15;
    return h;
}

TEST(byteMix, MixesByteAfterByte) {
    EXPECT_EQ(ByteMix().value(), 0u);
    ByteMix mix;
    mix.add(U8{1});
    EXPECT_EQ(mix.value(), mixed({1}));
    mix.add(U8{255});
    EXPECT_EQ(mix.value(), mixed({1, 255}));
}

TEST(byteMix, TakesNumbersFromTheirLowestByte) {
    ByteMix mix;
    mix.add(U32{0x04030201});
    mix.add(U64{0x0c0b0a0908070605});
    EXPECT_EQ(mix.value(), mixed({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(byteMix, GivesZeroForTwelveZeros) {
    EXPECT_EQ(mixed({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), 0u);
}

} // namespace
} // namespace Vel
