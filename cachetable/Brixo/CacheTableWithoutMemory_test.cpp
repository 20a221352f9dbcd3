// CacheTableWithoutMemory_test.cpp - what a table does when the general allocator has nothing more
// to give.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/Child.h>
#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/Tables.h>
#include <Vel/TraceCapture.h>
#include <Vel/testing/ScarceMemory.h>
#include <csignal>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace Brixo {
namespace {

using namespace Testing;
using Vel::Testing::allocationsLeft;
using Vel::Testing::always;

// They agree in their low 20 bits: too many for a bucket, which leads to a table of its own over
// the bits above.
U32 crowdedKey(U32 number) { return number << 20 | 5; }

// It agrees with them in its low 15 bits, in the same bucket: a place for it is between the two
// tables.
constexpr U32 strayKey = 1U << 15 | 5;

TEST(CacheTableWithoutMemory, AKeyThatFindsNoPlaceTakesNoSlot) {
    const RegionFolder regions;
    const Vel::Ptr<CacheTable> table = openTable(1024, 4);
    for (U32 number = 0; number < 40; ++number) write(*table, crowdedKey(number), "data");
    const std::vector<U32> free = freeSlots(*table);
    const std::string before = regions.bytes(regionName);

    const std::string stray = "stray";
    allocationsLeft = 0;
    EXPECT_THROW(write(*table, strayKey, stray), std::bad_alloc);
    allocationsLeft = always;
    EXPECT_EQ(table->keyToIndexs(), 40u);
    EXPECT_EQ(freeSlots(*table), free);
    EXPECT_EQ(entry(*table, strayKey), "absent");
    EXPECT_EQ(regions.bytes(regionName), before);
    EXPECT_EQ(table->auditErrors(9), 0u);

    write(*table, strayKey, stray);
    EXPECT_EQ(entry(*table, strayKey), "stra");
    EXPECT_EQ(table->keyToIndex(key(strayKey)), free.front());
    EXPECT_EQ(table->auditErrors(9), 0u);
}

// Entries whose keys need more room than the maps have at first, free slots, and two duplicates.
constexpr U32 mixedSlots = 1024;
constexpr U32 mixedKeys = 766; // three slots of four, less two that repeat a key: 5 of slot 0, 1

std::string mixedRegion() {
    std::string bytes = formattedRegion({});
    for (U32 slot = 0; slot < mixedSlots; ++slot) {
        const U32 keyWord = slot % 16 == 0 ? crowdedKey(slot) : slot;
        bytes += word(slot % 4 == 3 ? 0xffffffff : keyWord) + "data";
    }
    return bytes.replace(8 + 8 * 1021, 4, word(strayKey)).replace(8 + 8 * 1022, 4, word(1));
}

// Calls `body` with one more allocation granted each time, until some are left; how often it has
// thrown. `afterThrow` looks at what that left. Not each refusal is a failure: the maps do with
// what they have where they can.
template <class Body, class AfterThrow>
int refuseEachAllocation(Body body, AfterThrow afterThrow) {
    int throws = 0;
    for (int granted = 0; !testing::Test::HasFailure(); ++granted) {
        SCOPED_TRACE("allocations granted: " + std::to_string(granted));
        bool hasThrown = false;
        allocationsLeft = granted;
        try {
            body();
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        const int left = std::exchange(allocationsLeft, always);
        if (hasThrown) {
            ++throws;
            afterThrow();
        } else if (left > 0) {
            break;
        }
    }
    return throws;
}

TEST(CacheTableWithoutMemory, ARestartThatFailsLeavesBothMapsEmptyAndFindsAllTheNextTime) {
    const RegionFolder regions;
    Vel::TraceHandle::settingsAre("*/none");
    regions.put(regionName, mixedRegion());
    const Vel::Ptr<CacheTable> table = openTable(mixedSlots, 4);
    const Pairs used = usedSlots(*table);
    const std::vector<U32> free = freeSlots(*table);
    ASSERT_EQ(used.size(), mixedKeys);
    const std::string whole = regions.bytes(regionName);
    // A member that somebody holds lives on, whatever becomes of the map.
    const Vel::Ptr<CacheTable::VelKeyToIndex> held = table->keyToIndex().find(key(crowdedKey(16)));

    const int throws = refuseEachAllocation(
        [&] { table->doRestart(); },
        [&] {
            EXPECT_EQ(usedSlots(*table), Pairs());
            EXPECT_EQ(table->keyToIndexs(), 0u);
            EXPECT_EQ(freeSlots(*table), std::vector<U32>());
            EXPECT_EQ(table->freeIndexs(), 0u);
            EXPECT_EQ(entry(*table, crowdedKey(16)), "absent");
            EXPECT_EQ(lastWordsOf([&] { write(*table, 1, "data"); }),
                      "CacheTable.cpp:#: assertion failed: freeIndexs() > 0 (in takeFreeIndex)\n");
            EXPECT_TRUE(table->initialized());
            EXPECT_EQ(regions.bytes(regionName), whole);
            table->doRestart();
            EXPECT_EQ(usedSlots(*table), used);
            EXPECT_EQ(freeSlots(*table), free);
            EXPECT_EQ(table->auditErrors(9), 0u);
        });
    EXPECT_GT(throws, 4) << "more than it takes to make room: some came in the middle of the pass";
    EXPECT_EQ(usedSlots(*table), used);
    EXPECT_EQ(freeSlots(*table), free);
    EXPECT_EQ(held->value(), 16u);
}

// Some children die without a region, as the assertion says; in others the table is given up when
// the region is in use.
TEST(CacheTableWithoutMemory, ATableThatCouldNotBeMadeUsesNoRegion) {
    const RegionFolder regions;
    Vel::TraceHandle::settingsAre("*/none");
    regions.put(regionName, mixedRegion());

    enum Outcome { made, givenUp, stillThere };

    unsigned outcomes[3] = {};
    for (int granted = 0; outcomes[made] == 0; ++granted) {
        const int outcome = deathOf([&] {
                                allocationsLeft = granted;
                                try {
                                    openTable(mixedSlots, 4);
                                    ::_exit(made);
                                } catch (const std::bad_alloc&) {}
                                allocationsLeft = always;
                                Vel::TraceHandle::settingsAre("*/1");
                                Vel::TraceCapture lines;
                                openTable(mixedSlots, 4);
                                const bool isOther =
                                    lines.take().find("in use") != std::string::npos;
                                ::_exit(isOther ? stillThere : givenUp);
                            }).status;
        if (outcome == -SIGABRT) continue;
        ASSERT_TRUE(outcome >= made && outcome <= stillThere) << outcome;
        ++outcomes[outcome];
    }
    EXPECT_GT(outcomes[givenUp], 0u);
    EXPECT_EQ(outcomes[stillThere], 0u);
}

} // namespace
} // namespace Brixo
