#include <Vel/BitSet.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

using Flags = BitSet<29, unsigned>;

TEST(BitSet, SetsAndResetsEachPositionAlone) {
    for (int pos = 0; pos < 29; ++pos) {
        Flags flags;
        flags.set(pos);
        EXPECT_EQ(flags.word(), 1U << pos);
        for (int other = 0; other < 29; ++other) EXPECT_EQ(flags.test(other), other == pos);
        flags.reset(pos);
        EXPECT_EQ(flags, Flags());
    }
}

TEST(BitSet, ResetLeavesTheOtherBits) {
    Flags flags(0x1fffffffU);
    flags.reset(0);
    flags.reset(28);
    EXPECT_EQ(flags.word(), 0x0ffffffeU);
}

TEST(BitSet, IsWritesEitherValue) {
    Flags flags;
    flags.is(19, true);
    EXPECT_EQ(flags.word(), 0x80000U);
    flags.is(19, false);
    EXPECT_EQ(flags.word(), 0U);
}

TEST(BitSet, IsOneWord) { EXPECT_EQ(sizeof(Flags), sizeof(unsigned)); }

TEST(BitSetDeathTest, RefusesPositionsOutside) {
    Flags flags;
    const char* const low = "BitSet\\.h:[0-9]+: assertion failed: pos>=0 && pos<bits; pos = -1 ";
    const char* const high = "BitSet\\.h:[0-9]+: assertion failed: pos>=0 && pos<bits; pos = 29 ";
    EXPECT_DEATH(flags.set(-1), low);
    EXPECT_DEATH(flags.set(29), high);
    EXPECT_DEATH(flags.reset(-1), low);
    EXPECT_DEATH(flags.reset(29), high);
    EXPECT_DEATH(static_cast<void>(flags.test(29)), high);
}

} // namespace
} // namespace Vel
