// A table on a region that was made for other sizes, or for something else: what it notices, and
// what it leaves alone.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/SpokenTrace.h>
#include <Brixo/testing/Tables.h>
#include <Vel/TraceCapture.h>
#include <gtest/gtest.h>
#include <pinbuf/pinbuf.h>

namespace Brixo {
namespace {

using namespace Testing;

class CacheTableGeometry : public testing::Test {
protected:
    RegionFolder regions;
    Vel::TraceCapture lines;

    CacheTableGeometry() { Vel::TraceHandle::settingsAre("*/1"); }

    ~CacheTableGeometry() override { Vel::TraceHandle::settingsAre("*/none"); }

    std::string bytes() const { return regions.bytes(regionName); }

    // All that a table says before it dies.
    static std::string lastWordsOfTable(U32 size, U32 entrySize) {
        return lastWordsOf([&] {
            const SpokenTrace spoken;
            openTable(size, entrySize);
        });
    }
};

TEST_F(CacheTableGeometry, SaysNothingOfARegionThatWasMadeForIt) {
    openTable(3, 8);
    openTable(3, 8);
    EXPECT_EQ(lines.take(), "");
}

// 8 + 3 * 12 bytes: no number of slots of 10 bytes.
TEST_F(CacheTableGeometry, RefusesARegionMadeForSlotsOfAnotherSize) {
    write(*openTable(3, 8), 5, "12345678");
    const std::string before = bytes();
    EXPECT_EQ(
        lastWordsOfTable(3, 6),
        "BrixoCacheTable/1 Region " + regionName +
            " was made for slots of another size: 44 bytes on record, 38 bytes asked for, 10 a "
            "slot\n"
            "CacheTable.cpp:#: assertion failed: pa; record.sizeBytes = 44, pinbufSize() = 38, "
            "slotBytes = 10 (in refuseOtherSlots)\n");
    EXPECT_EQ(
        lastWordsOfTable(300, 6),
        "BrixoCacheTable/1 Region " + regionName +
            " was made for slots of another size: 44 bytes on record, 3008 bytes asked for, 10 a "
            "slot\n"
            "CacheTable.cpp:#: assertion failed: pa; record.sizeBytes = 44, pinbufSize() = 3008, "
            "slotBytes = 10 (in refuseOtherSlots)\n")
        << "too short is not all that is wrong with it";
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(entry(*openTable(3, 8), 5), "12345678");
}

// No table has made it.
TEST_F(CacheTableGeometry, RefusesARegionThatHasNoRoomForAHeader) {
    ASSERT_NE(pinbuf_alloc_func(regionName.c_str(), 7, ""), 0u);
    EXPECT_EQ(
        lastWordsOfTable(1, 8),
        "BrixoCacheTable/1 Region " + regionName +
            " was made for slots of another size: 7 bytes on record, 20 bytes asked for, 12 a "
            "slot\n"
            "CacheTable.cpp:#: assertion failed: pa; record.sizeBytes = 7, pinbufSize() = 20, "
            "slotBytes = 12 (in refuseOtherSlots)\n");
}

TEST_F(CacheTableGeometry, SaysThatALargerRegionMayHaveMoreSlotsAndGoesOn) {
    write(*openTable(3, 8), 5, "12345678");
    const Vel::Ptr<CacheTable> table = openTable(2, 8);
    EXPECT_EQ(lines.take(), "BrixoCacheTable/1 Region " + regionName +
                                " has another size: 44 bytes on record, 32 bytes asked for\n");
    EXPECT_EQ(entry(*table, 5), "12345678");
}

// 3 slots of 12 bytes, 2 of 18: the sizes alone tell nothing.
TEST_F(CacheTableGeometry, CannotTellOtherSlotsThatFillTheSameBytes) {
    openTable(3, 8);
    openTable(2, 14);
    EXPECT_EQ(lines.take(), "");
    openTable(1, 14);
    EXPECT_EQ(lines.take(), "BrixoCacheTable/1 Region " + regionName +
                                " has another size: 44 bytes on record, 26 bytes asked for\n");
}

TEST_F(CacheTableGeometry, LeavesItToPinbufToSayThatARegionIsTooShort) {
    openTable(3, 8);
    EXPECT_EQ(lastWordsOfTable(4, 8),
              "pinbuf_alloc_func: region \"" + regionName +
                  "\": the region has 44 bytes, 56 are asked for\n"
                  "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
}

// Who put it there may have had reasons for its size.
TEST_F(CacheTableGeometry, TakesARegionOfAnySizeThatWasPutThere) {
    regions.put(regionName, formattedRegion({{5, "12345678"}}) + "behind");
    const Vel::Ptr<CacheTable> table = openTable(1, 8);
    EXPECT_EQ(lines.take(), "BrixoCacheTable/1 Region " + regionName +
                                " has another size: 26 bytes on record, 20 bytes asked for\n");
    EXPECT_EQ(entry(*table, 5), "12345678");
}

TEST_F(CacheTableGeometry, RefusesNothingWhenItHasNoSlots) {
    openTable(3, 8);
    for (const U32 entrySize : {6u, 0xfffffffcu, 0xffffffffu}) {
        EXPECT_EQ(openTable(0, entrySize)->pinbufSize(), 8u);
        EXPECT_EQ(lines.take(), "BrixoCacheTable/1 Region " + regionName +
                                    " has another size: 44 bytes on record, 8 bytes asked for\n");
    }
}

TEST_F(CacheTableGeometry, SaysWhatItFormatsAnewUnlessThereWasNothing) {
    const auto said = [this](const std::string& region) {
        regions.clear();
        regions.put(regionName, region);
        openTable(1, 1);
        return lines.take();
    };
    const std::string anew =
        "BrixoCacheTable/1 Formatting region " + regionName + " anew, over magic 0x";
    EXPECT_EQ(said(filled(13, 0)), "");
    EXPECT_EQ(said(filled(8, 0) + word(7) + "x"), "") << "as memory that nobody has cleared may be";
    EXPECT_EQ(said(region(0xbeefcafe, 1, {{7, "x"}})), "");
    EXPECT_EQ(said(region(0xbeefcafe, 0, {{7, "x"}})), anew + "beefcafe, flag 0x0\n");
    EXPECT_EQ(said(region(0xfecaefbe, 255, {{7, "x"}})), anew + "fecaefbe, flag 0xff\n");
    EXPECT_EQ(said(region(0, 1, {{7, "x"}})), anew + "0, flag 0x1\n");
    EXPECT_EQ(said(filled(7, 0) + "R" + word(7) + "x"), anew + "0, flag 0x0\n")
        << "reserved bytes count";
}

} // namespace
} // namespace Brixo
