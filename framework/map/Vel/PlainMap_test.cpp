#include <Vel/PlainMap.h>

#include <Vel/PtrTrack.h>
#include <Vel/testing/LiveObjects.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
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

// The number of keys that are not plain, for lack of a seat.
std::size_t crowded(const std::vector<U32>& keys, PlainMap<U32>& map) {
    const std::size_t before = PtrTrack::alive();
    for (const U32 key : keys) {
        map.add(key, key / 2);
        EXPECT_EQ(map.count() < 100 ? map.auditErrors() : 0, 0u) << map.count();
    }
    EXPECT_EQ(map.auditErrors(), 0u);
    for (const U32 key : keys) {
        U32 value = 0;
        EXPECT_TRUE(map.find(key, value));
        EXPECT_EQ(value, key / 2);
    }
    U32 walked = 0;
    U32 last = 0;
    for (auto at = map.first(); at; last = at.key(), at.behind(last))
        EXPECT_TRUE(walked++ == 0 || PlainMap<U32>::ordersBefore(last, at.key()));
    EXPECT_EQ(walked, keys.size());
    return PtrTrack::alive() - before;
}

std::vector<U32> strided(U32 members, U32 stride) {
    std::vector<U32> keys(members);
    for (U32 i = 0; i < members; ++i) keys[i] = i * stride + 3;
    return keys;
}

std::vector<U32> inTheMapsOrder(std::vector<U32> keys) {
    std::ranges::sort(keys, PlainMap<U32>::ordersBefore);
    return keys;
}

TEST(PlainMap, ReservedRoomSeatsKeysOfAnyStride) {
    const Testing::LiveObjects objects;
    for (const U32 stride : {1U, 2U, 4U, 32U}) {
        PlainMap<U32> map;
        map.reserve(10'000);
        const std::size_t bytes = map.heapBytes();
        EXPECT_EQ(crowded(strided(10'000, stride), map), 0u) << stride;
        EXPECT_EQ(map.heapBytes(), bytes) << stride;
    }
}

// Low bits that the first 64 share by their order alone.
TEST(PlainMap, ReservedRoomSeatsKeysInTheMapsOrder) {
    const Testing::LiveObjects objects;
    PlainMap<U32> map;
    map.reserve(10'000);
    const std::size_t bytes = map.heapBytes();
    EXPECT_EQ(crowded(inTheMapsOrder(strided(10'000, 1)), map), 0u);
    EXPECT_EQ(map.heapBytes(), bytes);
}

TEST(PlainMap, AnUnreservedMapTakesKeysInTheMapsOrderAsAnyOthers) {
    const Testing::LiveObjects objects;
    PlainMap<U32> inOrder;
    PlainMap<U32> upwards;
    crowded(inTheMapsOrder(strided(10'000, 1)), inOrder);
    crowded(strided(10'000, 1), upwards);
    EXPECT_LE(inOrder.heapBytes(), 2 * upwards.heapBytes());
}

TEST(PlainMap, ReservedRoomLearnsFromKeysThatCameAndWent) {
    const Testing::LiveObjects objects;
    for (const U32 stride : {1U, 2U, 4U, 4096U, 1U << 18}) {
        const auto keys = inTheMapsOrder(strided(10'000, stride));
        PlainMap<U32> map;
        map.reserve(10'000);
        const std::size_t bytes = map.heapBytes();
        for (std::size_t i = 0; i < keys.size(); i += 500) map.add(keys[i], 0);
        U32 value = 0;
        for (std::size_t i = 0; i < keys.size(); i += 500) EXPECT_TRUE(map.take(keys[i], value));
        EXPECT_EQ(crowded(keys, map), 0u) << stride;
        EXPECT_EQ(map.heapBytes(), bytes) << stride;
    }
}

TEST(PlainMap, TakesKeysThatShareLessThanTheOthers) {
    const Testing::LiveObjects objects;
    for (const U32 room : {1000U, 100'000U}) {
        for (const U32 first : {10U, 63U, 64U, 65U, 500U}) {
            SCOPED_TRACE(std::to_string(room) + ", " + std::to_string(first));
            std::vector<U32> keys = strided(first, 4);
            for (U32 i = 0; keys.size() < 1000; ++i) keys.push_back(i * 4 + i % 3);
            PlainMap<U32> map;
            map.reserve(room);
            crowded(keys, map);
            for (const U32 key : keys) {
                U32 value = 0;
                EXPECT_TRUE(map.take(key, value));
                EXPECT_EQ(value, key / 2);
            }
            EXPECT_EQ(map.auditErrors(), 0u);
            EXPECT_EQ(map.count(), 0u);
            crowded(strided(500, 1), map);
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
