// CacheTableWithoutMemory_test.cpp - what a table does when the general allocator has nothing more to give.
#include <Brixo/CacheTable.h>

#include <Brixo/testing/RegionFolder.h>
#include <Brixo/testing/Tables.h>
#include <Vel/testing/ScarceMemory.h>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

namespace Brixo {
namespace {

using namespace Testing;
using Vel::Testing::allocationsLeft;
using Vel::Testing::always;

// They agree in their low 20 bits: too many for a bucket, which leads to a table of its own over the bits above.
U32 crowdedKey(U32 number) { return number << 20 | 5; }

// It agrees with them in its low 15 bits, in the same bucket: a place for it is between the two tables.
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

} // namespace
} // namespace Brixo
