#include <Vel/IndexSet.h>

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <vector>

namespace Vel {
namespace {

std::vector<U32> indexesOf(const IndexSet& set) {
    std::vector<U32> indexes;
    for (IndexSet::Cursor at = set.first(); at; at.behind(at.key())) indexes.push_back(at.key());
    return indexes;
}

TEST(IndexSet, HoldsNothingWithoutRoom) {
    IndexSet set;
    EXPECT_FALSE(set.add(0, true));
    EXPECT_FALSE(set.has(0));
    EXPECT_FALSE(set.first());
    EXPECT_EQ(set.heapBytes(), 0u);
    EXPECT_EQ(set.auditErrors(), 0u);
}

TEST(IndexSet, HoldsIndexesBelowItsLimit) {
    for (const U32 limit : {1U, 2U, 64U, 100U, 5000U}) {
        IndexSet set;
        set.reserve(limit);
        for (U32 index = 0; index < limit; ++index) ASSERT_TRUE(set.add(index, true));
        EXPECT_TRUE(set.set(limit / 2, true));
        EXPECT_FALSE(set.add(0, false));
        EXPECT_FALSE(set.add(2 * limit, true));
        EXPECT_EQ(set.count(), limit);
        const std::vector<U32> indexes = indexesOf(set);
        EXPECT_EQ(std::set<U32>(indexes.begin(), indexes.end()).size(), limit);
        for (std::size_t i = 1; i < indexes.size(); ++i)
            ASSERT_TRUE(IndexSet::ordersBefore(indexes[i - 1], indexes[i]));
        EXPECT_EQ(set.auditErrors(), 0u);
    }
}

TEST(IndexSet, GivesItsFirstAwayInOrder) {
    IndexSet set;
    set.reserve(6);
    for (const U32 index : {5U, 0U, 3U, 6U}) set.add(index, true);
    EXPECT_EQ(indexesOf(set), (std::vector<U32>{0, 6, 5, 3}));
    EXPECT_EQ(set.takeFirst(), 0u);
    EXPECT_EQ(set.takeFirst(), 6u);
    EXPECT_EQ(set.count(), 2u);
    bool value = false;
    EXPECT_TRUE(set.take(3, value));
    EXPECT_TRUE(value);
    EXPECT_FALSE(set.take(3, value));
    EXPECT_EQ(set.takeFirst(), 5u);
    EXPECT_EQ(set.count(), 0u);
    EXPECT_FALSE(set.first());
}

TEST(IndexSet, KeepsItsLimitWhileItHasMembers) {
    IndexSet set;
    set.reserve(4);
    set.add(1, true);
    set.reserve(1000);
    EXPECT_FALSE(set.add(500, true));
    EXPECT_TRUE(set.has(1));
    set.clear();
    set.reserve(1000);
    EXPECT_TRUE(set.add(500, true));
    EXPECT_LE(set.heapBytes(), 1024u); // less than a byte for each
}

struct HashesBelow {
    bool operator()(U32 a, U32 b) const { return hashesBelow(a, b); }
};

TEST(IndexSet, AgreesWithAModel) {
    for (const U32 limit : {1U, 16U, 64U, 1000U, 70'000U}) {
        IndexSet set;
        set.reserve(limit);
        std::set<U32, HashesBelow> model;
        std::mt19937 random(3);
        for (int step = 0; step < 20'000; ++step) {
            const U32 index = static_cast<U32>(random()) % limit;
            const bool isGrowing = step / 2500 % 2 == 0;
            bool value = false;
            if (random() % 4 != 0 ? isGrowing : !isGrowing) {
                set.add(index, true);
                model.insert(index);
            } else {
                ASSERT_EQ(set.take(index, value), model.erase(index) != 0);
            }
            if (step % 16 == 0 && !model.empty()) {
                ASSERT_EQ(set.takeFirst(), *model.begin());
                model.erase(model.begin());
            }
            ASSERT_EQ(set.count(), model.size());
            const U32 from = static_cast<U32>(random()) % (2 * limit);
            ASSERT_EQ(set.has(from), model.contains(from));
            IndexSet::Cursor at = set.first();
            at.behind(from);
            const auto expected = model.upper_bound(from);
            ASSERT_EQ(static_cast<bool>(at), expected != model.end()) << from;
            if (at) {
                ASSERT_EQ(at.key(), *expected) << from;
            }
            if (step % 1000 == 0) {
                ASSERT_EQ(set.auditErrors(), 0u);
            }
        }
    }
}

TEST(IndexSet, TheCursorStaysWhereItIs) {
    IndexSet set;
    set.reserve(8);
    for (const U32 index : {0U, 4U, 2U}) set.add(index, true);
    IndexSet::Cursor at = set.first();
    at.behind(0);
    EXPECT_TRUE(at.isAt(4));
    bool value = false;
    set.take(4, value);
    EXPECT_FALSE(at.isAt(4));
    set.add(6, true);
    at.behind(4);
    EXPECT_EQ(at.key(), 2u);
    at.behind(2);
    EXPECT_EQ(at.key(), 6u);
    at.behind(0xffffffff);
    EXPECT_FALSE(at);
}

} // namespace
} // namespace Vel
