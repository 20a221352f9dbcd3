#include <Orn/U64BitmaskIter.h>

#include <Vel/testing/AssertionTesting.h>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <type_traits>
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

// What an iterator holds, as it lies in memory.
struct Held {
    U64 word;
    Vel::U8 current;
    Vel::U8 isFinished;

    bool operator==(const Held&) const = default;
};

static_assert(std::is_trivially_copyable_v<U64BitmaskIter>);
static_assert(sizeof(U64BitmaskIter) == sizeof(Held));
static_assert(alignof(U64BitmaskIter) == alignof(Held));
static_assert(offsetof(Held, current) == 8 && offsetof(Held, isFinished) == 9);

Held held(const U64BitmaskIter& it) {
    Held bytes;
    std::memcpy(&bytes, &it, sizeof bytes);
    return bytes;
}

void PrintTo(const Held& held, std::ostream* out) {
    *out << held.word << ' ' << unsigned{held.current} << ' ' << unsigned{held.isFinished};
}

TEST(U64BitmaskIter, HoldsTheWordThePlaceAndWhetherItIsFinished) {
    const U64 word = 0x8000000100000010;
    U64BitmaskIter it{U64Bitmask(word)};
    EXPECT_EQ(held(it), (Held{word, 4, 0}));
    EXPECT_EQ(held(++it), (Held{word, 32, 0}));
    EXPECT_EQ(held(++it), (Held{word, 63, 0}));
    EXPECT_EQ(held(++it), (Held{word, 255, 1}));
    EXPECT_EQ(held(++it), (Held{word, 255, 1})) << "nothing changes any more";
    EXPECT_EQ(held(U64BitmaskIter{U64Bitmask()}), (Held{0, 255, 1}));
    EXPECT_EQ(held(U64BitmaskIter{U64Bitmask(U64{1} << 63)}), (Held{U64{1} << 63, 63, 0}));
}

// The mask is walked when the program is compiled, too.
constexpr unsigned countedMembers(U64 word) {
    unsigned count = 0;
    for (U64BitmaskIter it{U64Bitmask(word)}; it; ++it) ++count;
    return count;
}

static_assert(countedMembers(~U64{0}) == 64 && countedMembers(0) == 0);

TEST(U64BitmaskIterDeathTest, RefusesToReadBehindTheLastMember) {
    const U64BitmaskIter it{U64Bitmask()};
    EXPECT_DEATH((void)it.key(), assertionFailed("U64BitmaskIter.h", "inRange()",
                                                 "Orn::BitId Orn::U64BitmaskIter::key() const"));
    EXPECT_DEATH((void)*it, assertionFailed("U64BitmaskIter.h", "inRange()",
                                            "bool Orn::U64BitmaskIter::operator*() const"));
}

} // namespace
} // namespace Orn
