// What a table makes of the region that it finds.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/SpokenTrace.h>
#include <Brixo/testing/Tables.h>
#include <Vel/PtrTrack.h>
#include <Vel/testing/LiveObjects.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace Brixo {
namespace {

using namespace Testing;
using Slots = std::vector<U32>;

constexpr U32 magic = 0xbeefcafe;
constexpr U32 unused = 0xffffffff;

class CacheTableRecovery : public testing::Test {
protected:
    RegionFolder regions;

    std::string bytes() const { return regions.bytes(regionName); }

    // What a table of 4 slots of 2 bytes leaves in a region that looked like this.
    std::string after(const std::string& before) const {
        regions.clear();
        regions.put(regionName, before);
        EXPECT_EQ(openTable(4, 2)->auditErrors(9), 0u);
        return bytes();
    }
};

TEST_F(CacheTableRecovery, FindsAFreshRegionEmpty) {
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    EXPECT_EQ(usedSlots(*table), Pairs());
    EXPECT_EQ(freeSlots(*table), Slots({0, 2, 1, 3}));
    EXPECT_EQ(bytes(), formattedRegion({{unused, filled(2, 0)},
                                        {unused, filled(2, 0)},
                                        {unused, filled(2, 0)},
                                        {unused, filled(2, 0)}}));
}

TEST_F(CacheTableRecovery, KeepsEverySlotOfAFormattedRegion) {
    const std::string before = formattedRegion({{5, "ab"}, {unused, "cd"}, {0, "ef"}, {6, "gh"}});
    EXPECT_EQ(after(before), before);
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    EXPECT_EQ(entry(*table, 5), "ab");
    EXPECT_EQ(entry(*table, 0), "ef");
    EXPECT_EQ(entry(*table, 6), "gh");
    EXPECT_EQ(usedSlots(*table), Pairs({{0, 2}, {6, 3}, {5, 0}}));
    EXPECT_EQ(freeSlots(*table), Slots({1}));
}

TEST_F(CacheTableRecovery, TakesAnyFlagButZeroForFormatted) {
    for (const int flag : {1, 2, 0x80, 0xff}) {
        const std::string before =
            region(magic, flag, {{5, "ab"}, {unused, "cd"}, {0, "ef"}, {6, "gh"}});
        EXPECT_EQ(after(before), before) << flag;
    }
}

// Formatting touches neither data nor reserved bytes, nor what lies behind the last slot.
TEST_F(CacheTableRecovery, FormatsWhatIsNotFormatted) {
    const auto like = [](U32 magicWord, int flag, U32 keyWord) {
        std::string bytes = region(
            magicWord, flag, {{keyWord, "ab"}, {keyWord, "cd"}, {keyWord, "ef"}, {keyWord, "gh"}});
        return bytes.replace(5, 3, "RES") + "behind";
    };
    const std::string formatted = like(magic, 1, unused);
    EXPECT_EQ(after(like(magic, 0, 7)), formatted) << "a torn format";
    EXPECT_EQ(after(like(0, 0, 7)), formatted) << "never formatted";
    EXPECT_EQ(after(like(0, 1, 7)), formatted) << "an old flag";
    EXPECT_EQ(after(like(0xfecaefbe, 1, 7)), formatted) << "the other byte order";
    EXPECT_EQ(after(like(magic ^ 1, 1, 7)), formatted);
    EXPECT_EQ(after(like(magic ^ 0x80000000, 0xff, 7)), formatted);
}

TEST_F(CacheTableRecovery, BelievesEveryKeyWord) {
    const std::string garbage =
        formattedRegion({{0xdeadbeef, "??"}, {0xfffffffe, "??"}, {0x80000000, "??"}, {1, "??"}});
    EXPECT_EQ(after(garbage), garbage);
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    EXPECT_EQ(usedSlots(*table),
              Pairs({{0x80000000, 2}, {0xfffffffe, 1}, {1, 3}, {0xdeadbeef, 0}}));
    EXPECT_EQ(table->freeIndexs(), 0u);
}

// Of a writer that was killed between key word and data.
TEST_F(CacheTableRecovery, TakesUpASlotWhoseDataWereNeverWritten) {
    const std::string before = formattedRegion({{9, filled(2, 0)},
                                                {unused, filled(2, 0)},
                                                {unused, filled(2, 0)},
                                                {unused, filled(2, 0)}});
    EXPECT_EQ(after(before), before);
    EXPECT_EQ(entry(*openTable(4, 2), 9), filled(2, 0));
}

TEST_F(CacheTableRecovery, LeavesADuplicateKeyToItsLowestSlot) {
    std::initializer_list<std::pair<U32, std::string>> slots = {
        {10, "a"}, {11, "b"}, {5, "c"}, {12, "d"}, {13, "e"}, {14, "f"}, {15, "g"}, {5, "h"}};
    regions.put(regionName, formattedRegion(slots));
    const Vel::Ptr<CacheTable> table = openTable(8, 1);
    EXPECT_EQ(table->keyToIndex(key(5)), 2u);
    EXPECT_EQ(entry(*table, 5), "c");
    EXPECT_EQ(freeSlots(*table), Slots({7}));
    EXPECT_EQ(table->auditErrors(9), 0u);
    EXPECT_EQ(bytes(), formattedRegion({{10, "a"},
                                        {11, "b"},
                                        {5, "c"},
                                        {12, "d"},
                                        {13, "e"},
                                        {14, "f"},
                                        {15, "g"},
                                        {unused, "h"}}))
        << "the key word alone is wiped";
}

// Keys that share low bits up to some slot, with free slots and duplicates before and behind it.
TEST_F(CacheTableRecovery, FindsEveryKeyWhateverTheyShare) {
    constexpr U32 slots = 600;
    for (const U32 stride : {1U, 4U, 4096U}) {
        for (const U32 stray : {0U, 1U, 300U, slots}) {
            SCOPED_TRACE(std::to_string(stride) + ", " + std::to_string(stray));
            std::string bytes = formattedRegion({});
            std::map<U32, U32> used; // slot of each key
            Slots free;
            for (U32 slot = 0; slot < slots; ++slot) {
                const bool isFree = slot % 5 == 4;
                const U32 keyWord = (slot % 7 == 6 ? slot - 2 : slot) * stride + (slot == stray);
                bytes += word(isFree ? unused : keyWord) + "d";
                if (isFree || !used.emplace(keyWord, slot).second) free.push_back(slot);
            }
            regions.clear();
            regions.put(regionName, bytes);
            const Vel::Ptr<CacheTable> table = openTable(slots, 1);
            EXPECT_EQ(table->auditErrors(9), 0u);
            Pairs found = usedSlots(*table);
            std::ranges::sort(found);
            EXPECT_EQ(found, Pairs(used.begin(), used.end()));
            Slots foundFree = freeSlots(*table);
            std::ranges::sort(foundFree);
            EXPECT_EQ(foundFree, free);
        }
    }
}

// A key without a seat of its own becomes an object.
TEST_F(CacheTableRecovery, SeatsEveryKeyOfAStride) {
    constexpr U32 slots = 10'000;
    for (const U32 stride : {4U, 4096U}) {
        std::string bytes = formattedRegion({});
        for (U32 slot = 0; slot < slots; ++slot) bytes += word(slot * stride) + "d";
        regions.clear();
        regions.put(regionName, bytes);
        const Vel::Testing::LiveObjects objects;
        const Vel::Ptr<CacheTable> table = openTable(slots, 1);
        EXPECT_EQ(table->keyToIndexs(), slots);
        EXPECT_EQ(Vel::PtrTrack::alive(), 1U) << "the table alone: stride " << stride;
    }
}

TEST_F(CacheTableRecovery, BringsADeletedEntryBack) {
    {
        const Vel::Ptr<CacheTable> table = openTable(4, 2);
        write(*table, 1, "aa");
        write(*table, 2, "bb");
        table->entryDel(key(1));
        EXPECT_EQ(entry(*table, 1), "absent");
    }
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    EXPECT_EQ(entry(*table, 1), "aa");
    EXPECT_EQ(entry(*table, 2), "bb");
}

TEST_F(CacheTableRecovery, DoesNotBringADeletedEntryBackWhoseSlotWasTaken) {
    {
        const Vel::Ptr<CacheTable> table = openTable(4, 2);
        write(*table, 1, "aa");
        table->entryDel(key(1));
        write(*table, 2, "bb");
    }
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    EXPECT_EQ(entry(*table, 1), "absent");
    EXPECT_EQ(entry(*table, 2), "bb");
}

// The lowest slot wins, and deleting has left the older bytes there.
TEST_F(CacheTableRecovery, BringsBackTheOlderBytesOfAKeyThatMovedUp) {
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    write(*table, 1, "xx"); // slot 0
    write(*table, 2, "yy"); // slot 2
    write(*table, 7, "ol"); // slot 1
    table->entryDel(key(7));
    table->entryDel(key(2));
    write(*table, 7, "nw"); // slot 2
    EXPECT_EQ(entry(*table, 7), "nw");
    table->doRestart();
    EXPECT_EQ(entry(*table, 7), "ol");
    EXPECT_EQ(table->keyToIndex(key(7)), 1u);
    EXPECT_EQ(freeSlots(*table), Slots({2, 3}));
}

TEST_F(CacheTableRecovery, LosesTheKeyThatMarksUnusedSlots) {
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    write(*table, unused, "ab");
    EXPECT_EQ(entry(*table, unused), "ab");
    EXPECT_EQ(table->keyToIndexs(), 1u);
    EXPECT_EQ(table->auditErrors(9), 0u);
    const std::string before = bytes();
    table->doRestart();
    EXPECT_EQ(entry(*table, unused), "absent");
    EXPECT_EQ(table->freeIndexs(), 4u);
    EXPECT_EQ(bytes(), before);
}

TEST_F(CacheTableRecovery, GivesTheSameAgain) {
    regions.put(regionName,
                formattedRegion({{3, "a"}, {3, "b"}, {unused, "c"}, {4, "d"}, {3, "e"}}));
    const Vel::Ptr<CacheTable> table = openTable(5, 1);
    const Pairs used = usedSlots(*table);
    const Slots free = freeSlots(*table);
    const std::string left = bytes();
    EXPECT_EQ(used, Pairs({{4, 3}, {3, 0}}));
    EXPECT_EQ(free, Slots({4, 2, 1}));
    table->doRestart();
    EXPECT_EQ(usedSlots(*table), used);
    EXPECT_EQ(freeSlots(*table), free);
    EXPECT_EQ(bytes(), left);
}

TEST_F(CacheTableRecovery, ForgetsWhatTheMapsHeldBefore) {
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    write(*table, 1, "aa");
    table->keyToIndexIs(key(99), 3);
    table->freeIndexIs(0, true);
    table->freeIndexDel(2);
    table->initializedIs(false);
    table->doRestart();
    EXPECT_EQ(usedSlots(*table), Pairs({{1, 0}}));
    EXPECT_EQ(freeSlots(*table), Slots({2, 1, 3}));
    EXPECT_FALSE(table->initialized()) << "not its business";
}

TEST_F(CacheTableRecovery, FindsWhatAnotherProcessLeft) {
    EXPECT_EQ(inChild([] {
                  const Vel::Ptr<CacheTable> table = openTable(4, 2);
                  write(*table, 1, "aa");
                  write(*table, 2, "bb");
                  return 0;
              }),
              0);
    const Vel::Ptr<CacheTable> table = openTable(4, 2);
    EXPECT_EQ(entry(*table, 1), "aa");
    EXPECT_EQ(entry(*table, 2), "bb");
    EXPECT_EQ(table->freeIndexs(), 2u);
}

TEST_F(CacheTableRecovery, DiesWhenASlotLiesBehindTheRegion) {
    const Vel::Ptr<CacheTable> table = openTable(1, 4);
    EXPECT_EQ(lastWordsOf([&] {
                  table->pinbufSizeIs(8);
                  table->doRestart();
              }),
              "CacheTable.cpp:#: assertion failed: offset < pinbufSize(); index = 0, offset = 8 "
              "(in entryPtr)\n");
}

// Of 64 slots the first `inside` begin inside the region, the last of them with so many bytes of
// its key word. What comes before the end is done, what comes behind is not: slot n holds key n,
// and each third slot that of the one before it.
TEST_F(CacheTableRecovery, HasDoneEachSlotBeforeTheOneThatLiesBehindTheRegion) {
    constexpr U32 slots = 64;
    const auto keyWordAt = [](U32 slot) { return slot % 3 == 2 ? slot - 1 : slot; };
    std::string before = formattedRegion({});
    for (U32 slot = 0; slot < slots; ++slot) before += word(keyWordAt(slot)) + "data";
    for (const U32 inside : {0U, 1U, 9U, 10U, 47U, 48U, 63U}) {
        for (const U32 lastBytes : {1U, 3U, 4U, 8U}) {
            if (inside == 0 && lastBytes != 8) continue;
            const U32 size = 8 * inside + lastBytes;
            SCOPED_TRACE("region of " + std::to_string(size) + " bytes");
            std::string said = "BrixoCacheTable/8 CacheTable::doRestart\n";
            std::string after = before;
            for (U32 slot = 0; slot < inside; ++slot) {
                said += "BrixoCacheTable/9 Recovered entry, index: " + std::to_string(slot) +
                        " key: " + std::to_string(keyWordAt(slot)) + "\n";
                if (slot % 3 != 2) continue;
                said += "BrixoCacheTable/1 Discovered duplicate keys, old index: " +
                        std::to_string(slot - 1) + " new index: " + std::to_string(slot) + "\n";
                after.replace(8 + 8 * slot, 4, word(unused));
            }
            said += "CacheTable.cpp:#: assertion failed: offset < pinbufSize(); index = " +
                    std::to_string(inside) + ", offset = " + std::to_string(8 + 8 * inside) +
                    " (in entryPtr)\n";
            regions.clear();
            EXPECT_EQ(lastWordsOf([&] {
                          Vel::TraceHandle::settingsAre("*/none");
                          const Vel::Ptr<CacheTable> table = openTable(slots, 4);
                          for (U32 i = 0; i < before.size(); ++i)
                              table->pinbufPtr()[i] = static_cast<U8>(before[i]);
                          Vel::TraceHandle::settingsAre("*/all");
                          const SpokenTrace spoken;
                          table->pinbufSizeIs(size);
                          table->doRestart();
                      }),
                      said);
            EXPECT_EQ(bytes(), after);
        }
    }
}

TEST_F(CacheTableRecovery, ReadsOnlyItsOwnSlotsOfALargerRegion) {
    regions.put(regionName, formattedRegion({{1, "aa"}, {2, "bb"}, {3, "cc"}}));
    const Vel::Ptr<CacheTable> table = openTable(2, 2);
    EXPECT_EQ(usedSlots(*table), Pairs({{2, 1}, {1, 0}}));
    EXPECT_EQ(table->pinbufSize(), 20u);
    EXPECT_EQ(table->auditErrors(9), 0u);
}

} // namespace
} // namespace Brixo
