#include <Brixo/RegionLayout.h>

#include <gtest/gtest.h>
#include <string>

namespace Brixo::RegionLayout {
namespace {

TEST(RegionLayout, HasItsFieldsWhereOtherReadersLookForThem) {
    EXPECT_EQ(sizeof(Header), 8u);
    EXPECT_EQ(offsetof(Header, magic), 0u);
    EXPECT_EQ(offsetof(Header, formatted), 4u);
    EXPECT_EQ(offsetof(Header, reserved), 5u);
    EXPECT_EQ(magic, 0xbeefcafeu);
    EXPECT_EQ(unusedKeyWord, 0xffffffffu);
}

TEST(RegionLayout, PacksSlotsBehindTheHeader) {
    EXPECT_EQ(slotBytes(0), 4u);
    EXPECT_EQ(slotBytes(6), 10u);
    EXPECT_EQ(slotOffset(6, 0), 8u);
    EXPECT_EQ(slotOffset(6, 1), 18u);
    EXPECT_EQ(regionBytes(6, 0), 8u);
    EXPECT_EQ(regionBytes(6, 3), 38u);
    EXPECT_EQ(regionBytes(6, 3), slotOffset(6, 3)) << "the region ends where its last slot ends";
}

TEST(RegionLayout, ComputesModulo2To32) {
    EXPECT_EQ(slotBytes(0xffffffff), 3u);
    EXPECT_EQ(regionBytes(12, 0x10000001), 24u);
    EXPECT_EQ(slotOffset(12, 0x10000001), 24u);
}

TEST(RegionLayout, KnowsWhichSlotsFitIntoARegion) {
    EXPECT_TRUE(fits(0xfffffff3, 1));
    EXPECT_FALSE(fits(0xfffffff4, 1)) << "2^32 bytes";
    EXPECT_FALSE(fits(0xffffffff, 1)) << "though it counts as 11 bytes";
    EXPECT_TRUE(fits(0x7ffffff7, 2));
    EXPECT_FALSE(fits(0x7ffffff8, 2));
    EXPECT_TRUE(fits(0, 0x3ffffffd));
    EXPECT_FALSE(fits(0, 0x3ffffffe));
    EXPECT_TRUE(fits(12, 0x0fffffff));
    EXPECT_FALSE(fits(12, 0x10000000));
    EXPECT_TRUE(fits(0xffffffff, 0)) << "no slot is too large";
    EXPECT_FALSE(fits(0xffffffff, 0xffffffff));
}

TEST(RegionLayout, ReadsAndWritesKeyWordsAtAnyAddress) {
    for (unsigned shift = 0; shift < 8; ++shift) {
        unsigned char bytes[16];
        std::memset(bytes, 0x55, sizeof(bytes));
        writeKeyWord(bytes + shift, 0x04030201);
        std::string expected(16, 0x55);
        expected.replace(shift, 4, "\x01\x02\x03\x04");
        EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), 16), expected);
        EXPECT_EQ(readKeyWord(bytes + shift), 0x04030201u);
    }
}

} // namespace
} // namespace Brixo::RegionLayout
