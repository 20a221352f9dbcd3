#include <Orn/U64Bitmask.h>

#include <Vel/testing/AssertionTesting.h>
#include <Vel/testing/Registered.h>
#include <Vel/testing/ValueTesting.h>
#include <bit>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace Orn {
namespace {

using namespace Vel::Testing;
using Vel::U64;
using Vel::U8;

constexpr BitId nullBit(BitId::null());

TEST(U64Bitmask, IsEmptyByDefault) {
    static_assert(sizeof(U64Bitmask) == 8);
    EXPECT_EQ(U64Bitmask().value(), 0u);
    EXPECT_EQ(U64Bitmask().bits(), 0u);
}

TEST(U64Bitmask, AddsAndRemovesMembers) {
    U64Bitmask mask;
    mask.bitIdIs(BitId(5), true);
    mask.bitIdIs(BitId(40), true);
    EXPECT_EQ(mask.value(), 0x10000000020u);
    EXPECT_EQ(mask.bits(), 2u);
    EXPECT_TRUE(mask.bitId(BitId(40)));
    EXPECT_FALSE(mask.bitId(BitId(41)));
    EXPECT_TRUE(mask.bitIdDel(BitId(40)));
    EXPECT_FALSE(mask.bitIdDel(BitId(40)));
    EXPECT_EQ(mask.value(), 0x20u);
}

TEST(U64Bitmask, SettingAMemberToFalseLeavesItSet) {
    U64Bitmask mask;
    mask.bitIdIs(BitId(5), false);
    EXPECT_EQ(mask.value(), 0x20u);
    EXPECT_TRUE(mask.bitIdDel(BitId(5)));
    EXPECT_EQ(mask.value(), 0u);
}

TEST(U64Bitmask, ReadsAndDeletesModulo64) {
    U64Bitmask mask(1);
    EXPECT_TRUE(mask.bitId(BitId(64)));
    EXPECT_TRUE(mask.bitId(BitId(128)));
    EXPECT_FALSE(mask.bitId(BitId(65)));
    EXPECT_TRUE(mask.bitIdDel(BitId(192)));
    EXPECT_EQ(mask.value(), 0u);
}

TEST(U64BitmaskDeathTest, RefusesToSetABitBehindTheLast) {
    U64Bitmask mask;
    mask.bitIdIs(BitId(63), true);
    EXPECT_EQ(mask.value(), 0x8000000000000000u);
    EXPECT_DEATH(mask.bitIdIs(BitId(64), true),
                 assertionFailed("U64Bitmask.h", "bitId.value() < 64",
                                 "void Orn::U64Bitmask::bitIdIs(Orn::BitId, bool)"));
}

TEST(U64Bitmask, FindsTheNextMember) {
    const U64Bitmask mask(0x8000000000000001u);
    EXPECT_EQ(mask.nextBitId(nullBit), BitId(0));
    EXPECT_EQ(mask.nextBitId(BitId(0)), BitId(63));
    EXPECT_EQ(mask.nextBitId(BitId(63)), nullBit);
    EXPECT_EQ(mask.nextBitId(BitId(62)), BitId(63));
    EXPECT_EQ(U64Bitmask().nextBitId(nullBit), nullBit);
}

// The plain rule: the lowest set bit above `after` modulo 64, or the lowest at all after null.
unsigned nextByRule(U64 value, unsigned after) {
    for (unsigned b = after == 255 ? 0 : after % 64 + 1; b < 64; ++b)
        if ((value >> b & 1) != 0) return b;
    return 255;
}

TEST(U64Bitmask, FindsTheNextMemberAfterEveryByte) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 200; ++round) {
        const U64 value = random() & random() & (round % 2 == 0 ? ~U64{0} : random());
        for (unsigned b = 0; b < 256; ++b)
            ASSERT_EQ(U64Bitmask(value).nextBitId(BitId(static_cast<U8>(b))).value(),
                      nextByRule(value, b))
                << "mask " << value << " after " << b;
    }
}

TEST(U64Bitmask, CountsItsMembers) {
    std::mt19937_64 random(8);
    for (int round = 0; round < 1000; ++round) {
        const U64 value = random();
        ASSERT_EQ(U64Bitmask(value).bits(), static_cast<unsigned>(std::popcount(value)));
    }
    EXPECT_EQ(U64Bitmask(~U64{0}).bits(), 64u);
}

TEST(U64Bitmask, ComparesByValue) {
    EXPECT_TRUE(U64Bitmask(3) == U64Bitmask(3));
    EXPECT_TRUE(U64Bitmask(3) != U64Bitmask(0x100000003u));
}

TEST(U64Bitmask, PrintsReadsAndLogsTheFullRange) {
    for (const U64 value :
         {U64{0}, U64{1}, U64{0xffffffff}, U64{0x100000000}, U64{1} << 63, ~U64{0}}) {
        EXPECT_EQ(text(U64Bitmask(value)), std::to_string(value));
        EXPECT_EQ(parsed<U64Bitmask>(std::to_string(value)), U64Bitmask(value));
    }
    EXPECT_EQ(logged(U64Bitmask(0x0102030405060708u)), (std::vector<U8>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(fromLog<U64Bitmask>({1, 2, 3, 4, 5, 6, 7, 8}), U64Bitmask(0x0102030405060708u));
}

TEST(U64Bitmask, NamesItsAttributeWhenItCannotBeRead) {
    EXPECT_EQ(
        parseError<U64Bitmask>("18446744073709551616"),
        "in attribute 'value': number \"18446744073709551616\" at column 0 is out of range for "
        "unsigned long long");
}

TEST(U64Bitmask, AgreesWithASetOfNumbers) {
    std::mt19937 random(9);
    U64Bitmask mask;
    std::set<unsigned> model;
    for (int i = 0; i < 100'000; ++i) {
        const unsigned b = random() % 64;
        const BitId bit(static_cast<U8>(b));
        switch (random() % 3) {
        case 0:
            mask.bitIdIs(bit, random() % 2 == 0);
            model.insert(b);
            break;
        case 1: ASSERT_EQ(mask.bitIdDel(bit), model.erase(b) == 1); break;
        default:
            ASSERT_EQ(mask.bitId(bit), model.contains(b));
            ASSERT_EQ(mask.bits(), model.size());
        }
    }
}

TEST(U64Bitmask, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Orn::U64Bitmask"),
              "value(value: U64)\n"
              "2 value: U64; stored\n"
              "3 bits: U32; procedural\n"
              "4 bitId[Orn::BitId]: bool\n"
              "5 nextBitId(bitId: Orn::BitId): Orn::BitId\n");
}

} // namespace
} // namespace Orn
