#include <Brixo/CacheTable.h>

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/Tables.h>
#include <Vel/testing/Registered.h>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <pinbuf/pinbuf.h>
#include <type_traits>

namespace Brixo {
namespace {

using namespace Testing;
using Slots = std::vector<U32>;

constexpr U32 unused = 0xffffffff;

static_assert(std::is_base_of_v<Vel::PtrInterface, CacheTable>);
static_assert(!std::is_copy_constructible_v<CacheTable>);

class CacheTableTest : public testing::Test {
protected:
    RegionFolder regions;

    std::string bytes() const { return regions.bytes(regionName); }
};

TEST_F(CacheTableTest, IsReadyWhenItsConstructorReturns) {
    const Vel::Ptr<CacheTable> table = openTable(3, 4);
    EXPECT_EQ(table->agentId(), AgentId(3));
    EXPECT_EQ(table->tableId(), tableId);
    EXPECT_EQ(table->size(), 3u);
    EXPECT_EQ(table->entrySize(), 4u);
    EXPECT_EQ(table->pinbufSize(), 32u);
    EXPECT_NE(table->pinbufPtr(), nullptr);
    EXPECT_TRUE(table->initialized());
    EXPECT_EQ(table->keyToIndexs(), 0u);
    EXPECT_EQ(freeSlots(*table), Slots({0, 2, 1}));
    EXPECT_EQ(table->auditErrors(9), 0u);
    EXPECT_EQ(table->references(), 1u);
}

TEST_F(CacheTableTest, NamesItsRegionAfterAgentDeviceAndTheMixOfTheResource) {
    struct Name {
        U32 agent, device, type;
        U64 id;
        std::string name;
    };

    for (const Name& n :
         {Name{3, 1, 1, 3, regionName}, Name{3, 1, 1, 7, "CacheTable-3-1-1027015881"},
          Name{0, 0, 0, 0, "CacheTable-0-0-0"},
          Name{65535, 65535, 2, 0x0123456789abcdef, "CacheTable-65535-65535-1406596866"}}) {
        const PhysicalResourceId resource(static_cast<ResourceType>(n.type), n.id);
        const CacheTableIndex id(DeviceId(static_cast<Vel::U16>(n.device)), resource);
        cacheTableFactory(AgentId(static_cast<Vel::U16>(n.agent)), id, 1, 4);
        EXPECT_TRUE(regions.has(n.name)) << n.name;
    }
}

// The region's owner on record.
std::string owner() {
    std::string name = "no region";
    pinbuf_list(
        [](const pinbuf_region* region, void* context) {
            *static_cast<std::string*>(context) = region->owner;
            return 0;
        },
        &name);
    return name;
}

TEST_F(CacheTableTest, OwnsItsRegionUnderItsOwnNameWhenTheProcessHasNone) {
    openTable(1, 4);
    EXPECT_EQ(owner(), "@BrixoCacheTable");
}

TEST_F(CacheTableTest, OwnsItsRegionUnderTheNameOfTheProcess) {
    ::setenv("AGENT_PROCESS_NAME", "agent-7", 1);
    openTable(1, 4);
    ::unsetenv("AGENT_PROCESS_NAME");
    EXPECT_EQ(owner(), "agent-7");
}

TEST_F(CacheTableTest, TakesAnEmptyProcessNameAsItIs) {
    ::setenv("AGENT_PROCESS_NAME", "", 1);
    openTable(1, 4);
    ::unsetenv("AGENT_PROCESS_NAME");
    EXPECT_EQ(owner(), "");
}

TEST_F(CacheTableTest, WritesKeyWordAndDataInPlace) {
    const Vel::Ptr<CacheTable> table = openTable(3, 4);
    write(*table, 0x10, "\x11\x22\x33\x44");
    EXPECT_EQ(bytes(), std::string("\xfe\xca\xef\xbe\x01\0\0\0\x10\0\0\0\x11\x22\x33\x44"
                                   "\xff\xff\xff\xff\0\0\0\0\xff\xff\xff\xff\0\0\0\0",
                                   32));
    EXPECT_EQ(entry(*table, 0x10), "\x11\x22\x33\x44");
    EXPECT_EQ(table->entry(key(0x10)), table->pinbufPtr() + 12);
}

TEST_F(CacheTableTest, TakesFreeSlotsInTheOrderOfTheirReversedBits) {
    const Vel::Ptr<CacheTable> table = openTable(8, 1);
    EXPECT_EQ(freeSlots(*table), Slots({0, 4, 2, 6, 1, 5, 3, 7}));
    Slots taken;
    for (U32 k = 100; k < 108; ++k) {
        write(*table, k, "x");
        taken.push_back(table->keyToIndex(key(k)));
        EXPECT_EQ(table->auditErrors(9), 0u);
    }
    EXPECT_EQ(taken, Slots({0, 4, 2, 6, 1, 5, 3, 7}));
}

// Neither the lowest free slot nor the one that was freed last.
TEST_F(CacheTableTest, ChoosesByOrderAndNotByHistory) {
    const Vel::Ptr<CacheTable> table = openTable(8, 1);
    for (U32 k = 0; k < 8; ++k) write(*table, k, "x"); // key k lies in slot 0, 4, 2, 6, 1, 5, 3, 7
    table->entryDel(key(3));                           // slot 6
    table->entryDel(key(6));                           // slot 3
    table->entryDel(key(4));                           // slot 1
    EXPECT_EQ(freeSlots(*table), Slots({6, 1, 3}));
    write(*table, 50, "y");
    EXPECT_EQ(table->keyToIndex(key(50)), 6u);
}

TEST_F(CacheTableTest, KeepsTheSlotOfAKeyThatIsWrittenAgain) {
    const Vel::Ptr<CacheTable> table = openTable(2, 4);
    write(*table, 7, "old!");
    const unsigned char* const place = table->entry(key(7));
    const CacheTable::VelKeyToIndex* const member = table->keyToIndex().find(key(7));
    write(*table, 7, "new!");
    EXPECT_EQ(table->entry(key(7)), place);
    EXPECT_EQ(table->keyToIndex().find(key(7)), member);
    EXPECT_EQ(entry(*table, 7), "new!");
    EXPECT_EQ(table->freeIndexs(), 1u);
    EXPECT_EQ(bytes(), formattedRegion({{7, "new!"}, {unused, filled(4, 0)}}));
}

// A slot of 5 + 4 bytes, so that key words and data lie at any address.
TEST_F(CacheTableTest, ToleratesSlotsAndSourcesAtAnyAddress) {
    const Vel::Ptr<CacheTable> table = openTable(4, 5);
    const std::string source = "_abcdeABCDE12345vwxyz";
    const auto* data = reinterpret_cast<const unsigned char*>(source.data());
    for (U32 i = 0; i < 4; ++i) table->entryIs(key(0x01020304 + i), data + 1 + 5 * i);
    EXPECT_EQ(bytes(), formattedRegion({{0x01020304, "abcde"},
                                        {0x01020306, "12345"},
                                        {0x01020305, "ABCDE"},
                                        {0x01020307, "vwxyz"}}));
    EXPECT_EQ(entry(*table, 0x01020307), "vwxyz");
    EXPECT_EQ(openTable(4, 5)->auditErrors(9), 0u);
}

TEST_F(CacheTableTest, HoldsKeysWithoutDataWhenItsEntriesHaveNoBytes) {
    const Vel::Ptr<CacheTable> table = openTable(2, 0);
    EXPECT_EQ(table->pinbufSize(), 16u);
    table->entryIs(key(9), nullptr);
    EXPECT_EQ(bytes(), formattedRegion({{9, ""}, {unused, ""}}));
    EXPECT_EQ(table->entry(key(9)), table->pinbufPtr() + 12);
}

TEST_F(CacheTableTest, AnswersForAnAbsentKey) {
    const Vel::Ptr<CacheTable> table = openTable(2, 8);
    write(*table, 1, "12345678");
    const std::string before = bytes();
    EXPECT_EQ(table->entry(key(2)), nullptr);
    EXPECT_EQ(table->entry_py(key(2)), 0u);
    EXPECT_EQ(table->keyToIndex(key(2)), 0u);
    EXPECT_EQ(table->keyToIndexDel(key(2)), 0u);
    EXPECT_FALSE(table->freeIndex(2));
    table->entryDel(key(2));
    EXPECT_EQ(table->keyToIndexs(), 1u);
    EXPECT_EQ(table->freeIndexs(), 1u);
    EXPECT_EQ(bytes(), before);
}

TEST_F(CacheTableTest, DeletesWithoutWriting) {
    const Vel::Ptr<CacheTable> table = openTable(2, 4);
    write(*table, 5, "abcd");
    const std::string before = bytes();
    table->entryDel(key(5));
    EXPECT_EQ(table->entry(key(5)), nullptr);
    EXPECT_EQ(freeSlots(*table), Slots({0, 1}));
    EXPECT_EQ(table->auditErrors(9), 0u);
    EXPECT_EQ(bytes(), before);
}

TEST_F(CacheTableTest, ReadsAndWritesEightBytesForScripts) {
    const Vel::Ptr<CacheTable> table = openTable(2, 12);
    write(*table, 1, filled(12, 0x77));
    table->entryIs_py(key(1), 0x1122334455667788);
    EXPECT_EQ(entry(*table, 1), "\x88\x77\x66\x55\x44\x33\x22\x11" + filled(4, 0));
    EXPECT_EQ(table->entry_py(key(1)), 0x1122334455667788u);
}

TEST_F(CacheTableTest, WritesEightBytesIntoEntriesOfEight) {
    const Vel::Ptr<CacheTable> table = openTable(1, 8);
    table->entryIs_py(key(1), 0x1122334455667788);
    EXPECT_EQ(bytes(), formattedRegion({{1, "\x88\x77\x66\x55\x44\x33\x22\x11"}}));
}

TEST_F(CacheTableTest, ReadsOnIntoTheNextSlotWhenEntriesAreNarrow) {
    const Vel::Ptr<CacheTable> table = openTable(2, 6);
    write(*table, 1, "\x01\x02\x03\x04\x05\x06"); // slot 0
    write(*table, 0xa1b2, filled(6, 0x33));       // slot 1
    EXPECT_EQ(table->entry_py(key(1)), 0xa1b2060504030201u);
    // Of the last slot's entry, the bytes behind the region read as zero.
    EXPECT_EQ(table->entry_py(key(0xa1b2)), 0x0000333333333333u);
}

TEST_F(CacheTableTest, RefusesEightBytesForNarrowEntriesBeforeAnythingElse) {
    const Vel::Ptr<CacheTable> table = openTable(1, 6);
    write(*table, 1, "abcdef");
    const std::string before = bytes();
    // The key is new and the table full: the width is looked at first.
    EXPECT_EQ(lastWordsOf([&] { table->entryIs_py(key(2), 1); }),
              "CacheTable.cpp:#: assertion failed: entrySize() >= sizeof( U64 ) (in entryIs_py)\n");
    EXPECT_EQ(bytes(), before);
    for (const U32 entrySize : {0u, 7u}) {
        regions.clear();
        const Vel::Ptr<CacheTable> narrow = openTable(1, entrySize);
        EXPECT_EQ(
            lastWordsOf([&] { narrow->entryIs_py(key(1), 1); }),
            "CacheTable.cpp:#: assertion failed: entrySize() >= sizeof( U64 ) (in entryIs_py)\n");
    }
}

TEST_F(CacheTableTest, RefusesANewKeyWhenItIsFull) {
    const Vel::Ptr<CacheTable> table = openTable(2, 4);
    write(*table, 1, "aaaa");
    write(*table, 2, "bbbb");
    const std::string before = bytes();
    EXPECT_EQ(lastWordsOf([&] { write(*table, 3, "cccc"); }),
              "CacheTable.cpp:#: assertion failed: freeIndexs() > 0 (in takeFreeIndex)\n");
    EXPECT_EQ(bytes(), before);
    write(*table, 2, "BBBB");
    table->entryDel(key(1));
    write(*table, 3, "cccc");
    EXPECT_EQ(bytes(), formattedRegion({{3, "cccc"}, {2, "BBBB"}}));
}

TEST_F(CacheTableTest, MayHaveNoSlots) {
    const Vel::Ptr<CacheTable> table = openTable(0, 100);
    EXPECT_EQ(table->pinbufSize(), 8u);
    EXPECT_EQ(bytes(), formattedRegion({}));
    EXPECT_EQ(table->keyToIndexs() + table->freeIndexs(), 0u);
    EXPECT_EQ(table->auditErrors(9), 0u);
    table->doRestart();
    table->entryDel(key(1));
    EXPECT_EQ(lastWordsOf([&] { write(*table, 1, filled(100, 1)); }),
              "CacheTable.cpp:#: assertion failed: freeIndexs() > 0 (in takeFreeIndex)\n");
    EXPECT_EQ(lastWordsOf([&] { table->entryPtr(0); }),
              "CacheTable.cpp:#: assertion failed: offset < pinbufSize(); index = 0, offset = 8 "
              "(in entryPtr)\n");
}

TEST_F(CacheTableTest, FindsSlotsBelowItsSize) {
    const Vel::Ptr<CacheTable> table = openTable(5, 6);
    for (U32 i = 0; i < 5; ++i) EXPECT_EQ(table->entryPtr(i), table->pinbufPtr() + 8 + 10 * i);
    EXPECT_EQ(lastWordsOf([&] { table->entryPtr(5); }),
              "CacheTable.cpp:#: assertion failed: offset < pinbufSize(); index = 5, offset = 58 "
              "(in entryPtr)\n");
    EXPECT_EQ(lastWordsOf([&] { table->entryPtr(0xffffffff); }),
              "CacheTable.cpp:#: assertion failed: offset < pinbufSize(); index = 4294967295, "
              "offset = 4294967294 (in entryPtr)\n");
}

TEST_F(CacheTableTest, ComputesOffsetsModulo2To32) {
    const Vel::Ptr<CacheTable> table = openTable(2, 12); // slots of 16 bytes
    EXPECT_EQ(table->entryPtr(0x10000001), table->entryPtr(1));
}

TEST_F(CacheTableTest, LeavesTheBytesOfOtherSlotsAndTheReservedOnesAlone) {
    regions.put(regionName, std::string("\xfe\xca\xef\xbe\x05RES", 8) + word(1) + "aaa" +
                                word(unused) + "bbb" + word(2) + "ccc" + "behind");
    const Vel::Ptr<CacheTable> table = openTable(3, 3);
    write(*table, 9, "xyz");
    EXPECT_EQ(bytes(), std::string("\xfe\xca\xef\xbe\x05RES", 8) + word(1) + "aaa" + word(9) +
                           "xyz" + word(2) + "ccc" + "behind");
}

TEST_F(CacheTableTest, KeepsItsRegionWhenItIsDestroyed) {
    const unsigned char* place = nullptr;
    {
        const Vel::Ptr<CacheTable> table = openTable(1, 4);
        write(*table, 1, "abcd");
        place = table->entry(key(1));
    }
    EXPECT_EQ(std::memcmp(place, "abcd", 4), 0) << "still mapped";
    EXPECT_EQ(bytes(), formattedRegion({{1, "abcd"}}));
}

TEST_F(CacheTableTest, SettersStoreAndDoNothingElse) {
    const Vel::Ptr<CacheTable> table = openTable(1, 4);
    const std::string before = bytes();
    table->pinbufSizeIs(5);
    EXPECT_EQ(table->pinbufSize(), 5u);
    table->initializedIs(false);
    EXPECT_FALSE(table->initialized());
    unsigned char elsewhere[16] = {};
    table->pinbufPtrIs(elsewhere);
    EXPECT_EQ(table->pinbufPtr(), elsewhere);
    EXPECT_EQ(bytes(), before);
}

TEST_F(CacheTableTest, ASlotBecomesAnObjectOnlyForWhoAsks) {
    const Vel::Ptr<CacheTable> table = openTable(1000, 4);
    for (U32 k = 0; k < 500; ++k) write(*table, k * 4, "1234");
    table->entryDel(key(8));
    write(*table, 8, "5678");
    table->doRestart();
    EXPECT_EQ(table->keyToIndex().objects(), 0u);
    EXPECT_EQ(table->freeIndex().objects(), 0u);
    EXPECT_EQ(table->freeIndexs(), 500u);
    const Vel::Ptr<CacheTable::VelFreeIndex> first = table->freeIndex().find(999);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->value());
    EXPECT_EQ(first->references(), 2u);
    EXPECT_EQ(table->newKeyToIndex(key(1), 1000)->value(), 1000u);
    EXPECT_EQ(table->keyToIndex().objects(), 1u);
    EXPECT_EQ(table->freeIndex().objects(), 1u);
}

TEST_F(CacheTableTest, ItsMapsAreKeyedCollections) {
    const Vel::Ptr<CacheTable> table = openTable(4, 4);
    const std::string before = bytes();
    table->freeIndexDel(2);
    EXPECT_EQ(table->newKeyToIndex(key(70), 2)->value(), 2u);
    table->keyToIndexIs(key(70), 3);
    EXPECT_EQ(table->keyToIndex(key(70)), 3u);
    table->keyToIndexIs(key(71), 1);
    EXPECT_EQ(table->keyToIndexs(), 2u);
    EXPECT_EQ(table->keyToIndexDel(key(70)), 3u);
    CacheTable::KeyToIndex::Iterator position = table->keyToIndex().begin();
    table->keyToIndexDel(position);
    EXPECT_FALSE(position);
    EXPECT_EQ(table->keyToIndexs(), 0u);
    EXPECT_FALSE(table->freeIndex(2));
    EXPECT_TRUE(table->newFreeIndex(2, true)->value());
    EXPECT_TRUE(table->freeIndex(2));
    table->freeIndexIs(2, false);
    EXPECT_FALSE(table->freeIndex(2));
    CacheTable::FreeIndex::Iterator free = table->freeIndex().begin();
    table->freeIndexDel(free);
    EXPECT_EQ(free.key(), 2u);
    table->keyToIndexNotify(key(1));
    table->freeIndexNotify(1);
    EXPECT_EQ(table->freeIndexs(), 3u);
    table->keyToIndexDelAll();
    table->freeIndexDelAll();
    EXPECT_EQ(table->keyToIndexs() + table->freeIndexs(), 0u);
    EXPECT_EQ(bytes(), before);
    table->doRestart();
    EXPECT_EQ(freeSlots(*table), Slots({0, 2, 1, 3}));
}

TEST_F(CacheTableTest, AuditCountsTheSlotsThatAreNotInExactlyOneMap) {
    const Vel::Ptr<CacheTable> table = openTable(4, 4);
    write(*table, 1, "aaaa"); // slot 0
    write(*table, 2, "bbbb"); // slot 2
    EXPECT_EQ(table->auditErrors(9), 0u);
    table->freeIndexDel(3);
    EXPECT_EQ(table->auditErrors(9), 1u) << "slot 3 is nowhere";
    table->keyToIndexIs(key(3), 0);
    EXPECT_EQ(table->auditErrors(9), 2u) << "and slot 0 has two keys, though the counts are right";
    table->keyToIndexIs(key(3), 1);
    EXPECT_EQ(table->auditErrors(9), 2u) << "or slot 1 is used and free";
    table->keyToIndexIs(key(3), 4);
    EXPECT_EQ(table->auditErrors(9), 2u) << "or there is no slot 4";
    table->keyToIndexIs(key(3), 3);
    EXPECT_EQ(table->auditErrors(9), 0u);
    table->freeIndexIs(1, false);
    EXPECT_EQ(table->auditErrors(9), 1u) << "slot 1 is not free and has no key";
    table->freeIndexIs(1, true);
    table->freeIndexIs(77, true);
    EXPECT_EQ(table->auditErrors(9), 1u) << "there is no slot 77";
}

TEST_F(CacheTableTest, DiesWhenTheRegionIsShorter) {
    regions.put(regionName, filled(31, 7));
    EXPECT_EQ(lastWordsOf([] { openTable(3, 4); }),
              "pinbuf_alloc_func: region \"" + regionName +
                  "\": the region has 31 bytes, 32 are asked for\n"
                  "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
    EXPECT_EQ(bytes(), filled(31, 7));
}

TEST_F(CacheTableTest, DiesWhenTheRegionIsALink) {
    const std::string target = regions.beside("target");
    std::ofstream(target) << filled(32, 7);
    std::filesystem::create_symlink(target, regions.path(regionName));
    EXPECT_EQ(lastWordsOf([] { openTable(3, 4); }),
              "pinbuf_alloc_func: region \"" + regionName + "\": \"" + regions.path(regionName) +
                  "\" is a symbolic link\n"
                  "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
    EXPECT_EQ(bytes(), filled(32, 7));
}

TEST_F(CacheTableTest, DiesWhenTheRegionIsNoFile) {
    std::filesystem::create_directory(regions.path(regionName));
    EXPECT_EQ(lastWordsOf([] { openTable(3, 4); }),
              "pinbuf_alloc_func: region \"" + regionName + "\": \"" + regions.path(regionName) +
                  "\" is not a regular file\n"
                  "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
}

TEST_F(CacheTableTest, DiesWhenThereAreNoAddressesForSoLargeARegion) {
    EXPECT_EQ(lastWordsOf([] { openTable(1, 0xc0000000); }),
              "pinbuf_alloc_func: region \"" + regionName +
                  "\": no physical addresses left for 3221225484 bytes, the longest free range has "
                  "2147483648\n"
                  "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
}

// Whose slots, counted without wrapping around, reach beyond 2^32 bytes: no region is made for it,
// and none is touched.
TEST_F(CacheTableTest, RefusesSlotsThatReachBeyond2To32) {
    struct Refused {
        U32 size, entrySize, bytes; // bytes modulo 2^32
    };

    for (const Refused& r : {Refused{1, 0xfffffff5, 1},
                             {1, 0xfffffffb, 7},
                             {1, 0xfffffffc, 8},
                             {1, 0xfffffffd, 9},
                             {1, 0xffffffff, 11},
                             {2, 0x7ffffff9, 2},
                             {3, 0x55555552, 10},
                             {0x3fffffff, 0, 4},
                             {0x40000000, 0, 8},
                             {0x40000001, 0, 12},
                             {1717986919, 1, 11}, // would end in the middle of slot 0's key word
                             {0x10000001, 12, 24},
                             {0xffffffff, 0xfffffffc, 8},
                             {0xffffffff, 0xffffffff, 5}}) {
        for (const std::string& before : {std::string(), filled(100, 7)}) {
            SCOPED_TRACE(r.entrySize);
            if (!before.empty()) regions.put(regionName, before);
            EXPECT_EQ(lastWordsOf([&] { openTable(r.size, r.entrySize); }),
                      "CacheTable.cpp:#: assertion failed: offset < pinbufSize(); size() = " +
                          std::to_string(r.size) +
                          ", entrySize() = " + std::to_string(r.entrySize) +
                          ", pinbufSize() = " + std::to_string(r.bytes) + " (in openRegion)\n");
            EXPECT_EQ(regions.has(regionName), !before.empty());
            EXPECT_EQ(bytes(), before);
        }
        regions.clear();
    }
}

// Just below the wrap it is pinbuf that refuses; a size of 2^32 sharp is none.
TEST_F(CacheTableTest, DiesWithoutARegionJustBelow2To32) {
    struct Refused {
        U32 size, entrySize;
        std::string bytes; // "" for 2^32
    };

    for (const Refused& r : {Refused{1, 0xfffffff3, "4294967295"},
                             {1, 0xfffffff4, ""},
                             {2, 0x7ffffff7, "4294967294"},
                             {2, 0x7ffffff8, ""},
                             {0x3ffffffd, 0, "4294967292"},
                             {0x3ffffffe, 0, ""}}) {
        EXPECT_EQ(
            lastWordsOf([&] { openTable(r.size, r.entrySize); }),
            r.bytes.empty()
                ? "CacheTable.cpp:#: assertion failed: pa; size() = " + std::to_string(r.size) +
                      ", entrySize() = " + std::to_string(r.entrySize) + " (in openRegion)\n"
                : "pinbuf_alloc_func: region \"" + regionName +
                      "\": no physical addresses left for " + r.bytes +
                      " bytes, the longest free range has 2147483648\n"
                      "CacheTable.cpp:#: assertion failed: pa (in openRegion)\n");
        EXPECT_FALSE(regions.has(regionName));
    }
}

TEST_F(CacheTableTest, MayHaveNoSlotsOfAnySize) {
    for (const U32 entrySize : {0xfffffff4u, 0xfffffffbu, 0xfffffffcu, 0xfffffffdu, 0xffffffffu}) {
        regions.clear();
        const Vel::Ptr<CacheTable> table = openTable(0, entrySize);
        EXPECT_EQ(table->pinbufSize(), 8u);
        EXPECT_EQ(bytes(), formattedRegion({}));
        EXPECT_EQ(table->auditErrors(9), 0u);
    }
}

TEST(CacheTable, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Brixo::CacheTable"),
              "entity(agentId: Brixo::AgentId, tableId: Brixo::CacheTableIndex, size: U32, "
              "entrySize: U32)\n"
              "130 agentId: Brixo::AgentId; stored\n"
              "131 tableId: Brixo::CacheTableIndex; stored\n"
              "132 size: U32; stored\n"
              "133 entrySize: U32; stored\n"
              "134 entry(key: Brixo::DeviceOffset): Vel::BytePtr\n"
              "135 entryIs(key: Brixo::DeviceOffset, data: Vel::BytePtr)\n"
              "136 entryDel(key: Brixo::DeviceOffset)\n"
              "137 entry_py(key: Brixo::DeviceOffset): U64\n"
              "138 entryIs_py(key: Brixo::DeviceOffset, data: U64)\n"
              "139 pinbufPtr: Vel::BytePtr; stored\n"
              "140 pinbufSize: U32; stored\n"
              "141 entryPtr(index: U32): Vel::BytePtr\n"
              "142 keyToIndex[Brixo::DeviceOffset]: U32; stored\n"
              "143 freeIndex[U32]: bool; stored\n"
              "144 doRestart; procedural\n"
              "145 initialized: bool; stored\n"
              "146 handleInitialized; procedural\n");
}

} // namespace
} // namespace Brixo
