#include <Orn/U64BitmaskIter.h>

#include <Vel/testing/AssertionTesting.h>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace Orn {
namespace {

using Vel::U64;
using Vel::Testing::assertionFailed;

std::vector<unsigned> members(U64 value) {
    std::vector<unsigned> found;
    for (U64BitmaskIter it{U64Bitmask(value)}; it; ++it) {
        EXPECT_TRUE(*it);
        found.push_back(it.key().value());
    }
    return found;
}

TEST(U64BitmaskIter, VisitsMembersInAscendingOrder) {
    EXPECT_EQ(members(0), std::vector<unsigned>{});
    EXPECT_EQ(members(U64{1} << 63), std::vector<unsigned>{63});
    EXPECT_EQ(members(0x8000000080000101u), (std::vector<unsigned>{0, 8, 31, 63}));
    EXPECT_EQ(members(~U64{0}).size(), 64u);
}

TEST(U64BitmaskIter, VisitsWhatABitTestFinds) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 1000; ++round) {
        const U64 value = random() & random();
        std::vector<unsigned> expected;
        for (unsigned b = 0; b < 64; ++b)
            if ((value >> b & 1) != 0) expected.push_back(b);
        ASSERT_EQ(members(value), expected);
    }
}

TEST(U64BitmaskIter, IsFinishedAtOnceOnAnEmptyMask) {
    U64BitmaskIter it{U64Bitmask()};
    EXPECT_FALSE(it.inRange());
    EXPECT_FALSE(static_cast<bool>(it));
    ++it;
    EXPECT_FALSE(it.inRange());
}

TEST(U64BitmaskIter, DoesNotSeeLaterChangesOfTheMask) {
    U64Bitmask mask(1);
    U64BitmaskIter it{mask};
    mask.bitIdIs(BitId(9), true);
    ++it;
    EXPECT_FALSE(it.inRange());
}

TEST(U64BitmaskIterDeathTest, RefusesToReadBehindTheLastMember) {
    const U64BitmaskIter it{U64Bitmask()};
    EXPECT_DEATH((void)it.key(), assertionFailed("U64BitmaskIter.h", "inRange()",
                                                 "Orn::BitId Orn::U64BitmaskIter::key() const"));
    EXPECT_DEATH((void)*it, assertionFailed("U64BitmaskIter.h", "inRange()",
                                            "bool Orn::U64BitmaskIter::operator*() const"));
}

} // namespace
} // namespace Orn
