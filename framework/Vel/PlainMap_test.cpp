#include <Vel/PlainMap.h>

#include <gtest/gtest.h>
#include <vector>

namespace Vel {
namespace {

TEST(PlainMap, HoldsNumbersUnderKeys) {
    PlainMap<U32> map;
    U32 value = 77;
    EXPECT_FALSE(map.find(1, value));
    EXPECT_EQ(value, 77u);
    EXPECT_TRUE(map.set(1, 10));
    EXPECT_TRUE(map.set(1, 11));
    EXPECT_TRUE(map.add(2, 20));
    EXPECT_TRUE(map.find(1, value));
    EXPECT_EQ(value, 11u);
    EXPECT_EQ(map.count(), 2u);
    EXPECT_TRUE(map.take(1, value));
    EXPECT_FALSE(map.take(1, value));
    EXPECT_EQ(value, 11u);
    EXPECT_EQ(map.count(), 1u);
    map.clear();
    EXPECT_EQ(map.count(), 0u);
    EXPECT_FALSE(map.first());
}

TEST(PlainMap, TakesNoMemoryForWhatFitsOneBucket) {
    PlainMap<U32> map;
    for (U32 key = 0; key < 5; ++key) map.add(key, key);
    EXPECT_EQ(map.heapBytes(), 0u);
}

TEST(PlainMap, ReservingKeepsTheMembers) {
    for (const U32 members : {3U, 5U, 6U, 8U, 40U}) {
        PlainMap<U32> map;
        for (U32 i = 0; i < members; ++i) map.add(i << 26, i);
        map.reserve(1000);
        EXPECT_EQ(map.count(), members);
        EXPECT_EQ(map.auditErrors(), 0u) << members;
        for (U32 i = 0; i < members; ++i) {
            U32 value = 0;
            ASSERT_TRUE(map.find(i << 26, value));
            EXPECT_EQ(value, i);
        }
    }
}

TEST(PlainMap, AGrownMapSpendsLittleMoreThanASeatOnAMember) {
    constexpr U32 members = 100000;
    PlainMap<U32> map;
    for (U32 i = 0; i < members; ++i) map.add(i * 2654435761U, i);
    EXPECT_EQ(map.auditErrors(), 0u);
    EXPECT_LT(map.heapBytes(), members * 53);
}

TEST(PlainMap, TheCursorKnowsItsValueUntilTheMapChanges) {
    PlainMap<U32> map;
    map.add(0, 5);
    map.add(1, 6);
    auto at = map.first();
    ASSERT_TRUE(at);
    EXPECT_TRUE(at.isAt(0));
    EXPECT_FALSE(at.isAt(1));
    map.set(0, 7);
    EXPECT_TRUE(at.isAt(0));
    EXPECT_EQ(at.value(), 7u);
    map.add(2, 8);
    EXPECT_FALSE(at.isAt(0));
    at.behind(0);
    EXPECT_EQ(at.key(), 2u);
    at.behind(0xffffffff); // whose hash is the last of all
    EXPECT_FALSE(at);
}

} // namespace
} // namespace Vel
