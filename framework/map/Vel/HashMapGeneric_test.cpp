#include <Vel/HashMapGeneric.h>

#include <Vel/HashMap.h>
#include <Vel/MapMember.h>
#include <gtest/gtest.h>
#include <set>

namespace Vel {
namespace {

class Member final : public MapMember<U64, int> {
public:
    using MapMember::MapMember;
};

using Map = HashMap<Member, U64, int>;

// Only the operations that know no types.
TEST(HashMapGeneric, IsSearchedAndWalkedWithoutKnowingItsTypes) {
    HashMapGeneric map(4, HashMapVTable<Member, U64>::instance());
    const HashMapVTableGeneric& vtable = HashMapVTable<Member, U64>::instance();
    for (U64 key = 0; key < 1000; ++key) {
        const Ptr<Member> member = new Member(key << 30, 1);
        U64 copy = key << 30;
        map.newMemberG(member, &copy);
    }
    ASSERT_EQ(map.size(), 1000u);
    for (U64 n = 0; n < 1000; ++n) {
        const U64 key = n << 30;
        int bucket = 0;
        PtrInterface* candidate = map.startAtHash(&key, keyHash(key), &bucket);
        while (candidate != nullptr && !vtable.keyEquals(&key, candidate))
            candidate = static_cast<MapLink*>(candidate)->fwkNext();
        ASSERT_NE(candidate, nullptr);
        EXPECT_EQ(static_cast<Member*>(candidate)->key(), key);
    }
    int bucket = 0;
    std::size_t walked = 0;
    U32 last = 0;
    for (PtrInterface* m = map.findNextG(nullptr, &bucket); m != nullptr;
         m = map.findNextG(m, &bucket)) {
        EXPECT_TRUE(walked == 0 || vtable.hash(m) >= last);
        last = vtable.hash(m);
        ++walked;
    }
    EXPECT_EQ(walked, 1000u);
    EXPECT_EQ(map.auditErrors(1), 0u);
    int none = -1;
    EXPECT_EQ(map.findNextBucket(&none), nullptr);
    map.setSize0(10);
    map.emptyAllBuckets();
    EXPECT_EQ(map.size(), 0u);
    EXPECT_EQ(map.findNextG(nullptr, &bucket), nullptr);
}

TEST(HashMapGeneric, LearnsBeforeItsFirstMemberWhatMembersAre) {
    HashMapGeneric map(4);
    EXPECT_EQ(map.size(), 0u);
    int bucket = 0;
    EXPECT_EQ(map.findNextG(nullptr, &bucket), nullptr);
    map.vtableIs(HashMapVTable<Member, U64>::instance());
    U64 key = 7;
    const Ptr<Member> member = new Member(key, 1);
    map.newMemberG(member, &key);
    EXPECT_EQ(map.startAtHash(&key, keyHash(key), &bucket), member.ptr());
    EXPECT_EQ(map.findNextG(nullptr, &bucket), member.ptr());
    EXPECT_EQ(map.auditErrors(1), 0u);
    map.deleteMember(member);
    EXPECT_EQ(map.size(), 0u);
    EXPECT_EQ(member->references(), 1u);
    HashMapGeneric roomy(100);
    EXPECT_GT(roomy.heapBytes(), 0u);
}

TEST(HashMapGenericDeathTest, AMemberNeedsAVTableAndAVTableAnEmptyMap) {
    U64 key = 7;
    const Ptr<Member> member = new Member(key, 1);
    HashMapGeneric map(4);
    EXPECT_DEATH(map.newMemberG(member, &key),
                 "HashMapGeneric.cpp:[0-9]+: assertion failed: vtableIs\\(\\) was called ");
    map.vtableIs(HashMapVTable<Member, U64>::instance());
    map.newMemberG(member, &key);
    EXPECT_DEATH(map.vtableIs(HashMapVTable<Member, U64>::instance()),
                 "HashMapGeneric.cpp:[0-9]+: assertion failed: size\\(\\) == 0; size\\(\\) = 1 ");
}

// Keys of few hashes: n, and 2^32 times itself beside it, fold to the same 32 bits in groups.
class HashMapGenericOfFewHashes : public testing::Test {
protected:
    HashMapGenericOfFewHashes() {
        for (U64 n = 0; n < groups * perGroup; ++n) {
            U64 key = keyOf(n / perGroup, n % perGroup);
            map.newMemberG(Ptr<Member>(new Member(key, 1)), &key);
        }
    }

    // Folds to the group's number; odd keys only, so that there is something between them.
    static U64 keyOf(U64 group, U64 n) {
        const U64 high = 2 * n + 1;
        return high << 32 | (high ^ group);
    }

    PtrInterface* start(U64 key, int* bucket) const {
        return map.startAtHash(&key, keyHash(key), bucket);
    }

    static constexpr U64 groups = 40;
    static constexpr U64 perGroup = 25;
    HashMapGeneric map{4, HashMapVTable<Member, U64>::instance()};
};

TEST_F(HashMapGenericOfFewHashes, StartAtHashGivesTheMemberWithTheKey) {
    EXPECT_EQ(map.auditErrors(9), 0u);
    for (U64 group = 0; group < groups; ++group) {
        for (U64 n = 0; n < perGroup; ++n) {
            int bucket = 0;
            const U64 key = keyOf(group, n);
            const auto* const member = static_cast<Member*>(start(key, &bucket));
            ASSERT_NE(member, nullptr);
            EXPECT_EQ(member->key(), key);
            EXPECT_EQ(static_cast<U32>(bucket), keyHash(key));
        }
    }
}

TEST_F(HashMapGenericOfFewHashes, StartAtHashGivesTheFirstOfTheHashBehindAnAbsentKey) {
    int bucket = 0;
    for (U64 group = 0; group < groups; ++group) {
        for (U64 n = 0; n + 1 < perGroup; ++n) {
            const U64 high = 2 * n + 2;
            const auto* const member =
                static_cast<Member*>(start(high << 32 | (high ^ group), &bucket));
            ASSERT_NE(member, nullptr);
            EXPECT_EQ(member->key(), keyOf(group, n + 1));
        }
        const U64 behind = 2 * perGroup + 2;
        EXPECT_EQ(start(behind << 32 | (behind ^ group), &bucket), nullptr);
        const auto* const first =
            static_cast<Member*>(map.startAtHash(nullptr, keyHash(keyOf(group, 0)), &bucket));
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(first->key(), keyOf(group, 0)) << "without a key, the first of the hash";
    }
    EXPECT_EQ(start(keyOf(groups, 0), &bucket), nullptr) << "a hash that no member has";
}

TEST_F(HashMapGenericOfFewHashes, FindNextBucketGoesFromHashToHash) {
    std::set<U32> hashes;
    for (U64 group = 0; group < groups; ++group) hashes.insert(keyHash(keyOf(group, 0)));
    ASSERT_EQ(hashes.size(), groups);
    int bucket = 0;
    EXPECT_NE(map.findNextG(nullptr, &bucket), nullptr);
    for (auto expected = hashes.begin(); ++expected != hashes.end();) {
        const auto* const member = static_cast<Member*>(map.findNextBucket(&bucket));
        ASSERT_NE(member, nullptr);
        EXPECT_EQ(static_cast<U32>(bucket), *expected);
        EXPECT_EQ(keyHash(member->key()), *expected);
    }
    EXPECT_EQ(map.findNextBucket(&bucket), nullptr);
    EXPECT_EQ(static_cast<U32>(bucket), *hashes.rbegin()) << "it stays where it was";
}

TEST_F(HashMapGenericOfFewHashes, AMemberOfEqualKeyGivesWay) {
    int bucket = 0;
    for (U64 n = 0; n < perGroup; ++n) {
        U64 key = keyOf(3, n);
        const Ptr<PtrInterface> old = start(key, &bucket);
        const Ptr<Member> member = new Member(key, 2);
        map.newMemberG(member, &key);
        EXPECT_EQ(start(key, &bucket), member.ptr());
        EXPECT_EQ(old->references(), 1u);
        map.deleteMember(old);
    }
    EXPECT_EQ(map.size(), groups * perGroup);
    EXPECT_EQ(map.auditErrors(9), 0u);
}

TEST(HashMapGenericDeathTest, AMembersKeyIsItsKey) {
    HashMapGeneric map(4, HashMapVTable<Member, U64>::instance());
    U64 other = 8;
    EXPECT_DEATH(map.newMemberG(Ptr<Member>(new Member(7, 0)), &other),
                 "HashMapGeneric\\.cpp:[0-9]+: assertion failed: vtable_->keyEquals\\(key, "
                 "member\\.ptr\\(\\)\\) ");
}

TEST(HashMapGeneric, OwnsOneReferenceToEachMember) {
    const Ptr<Member> member = new Member(7, 0);
    {
        HashMapGeneric map(4, HashMapVTable<Member, U64>::instance());
        U64 key = 7;
        map.newMemberG(member, &key);
        EXPECT_EQ(member->references(), 2u);
        map.deleteMember(member);
        EXPECT_EQ(member->references(), 1u);
        map.newMemberG(member, &key);
    }
    EXPECT_EQ(member->references(), 1u);
    EXPECT_EQ(member->fwkNext(), nullptr);
}

TEST(HashMapVTable, HashesComparesAndLinks) {
    const HashMapVTableGeneric& vtable = HashMapVTable<Member, U64>::instance();
    EXPECT_EQ(&vtable, &(HashMapVTable<Member, U64>::instance()));
    const Ptr<Member> a = new Member(0x100000002, 0);
    const Ptr<Member> b = new Member(0x200000001, 0);
    EXPECT_EQ(vtable.hash(a.ptr()), bitReverse(3));
    EXPECT_EQ(vtable.hash(a.ptr()), vtable.hash(b.ptr()));
    U64 key = 0x100000002;
    EXPECT_TRUE(vtable.keyEquals(&key, a.ptr()));
    EXPECT_FALSE(vtable.keyEquals(&key, b.ptr()));
    EXPECT_TRUE(vtable.keyLessThan(&key, b.ptr(), nullptr));
    EXPECT_FALSE(vtable.keyLessThan(&key, a.ptr(), nullptr));
    EXPECT_TRUE(vtable.keyLessThan(nullptr, b.ptr(), a.ptr()));
    EXPECT_FALSE(vtable.keyLessThan(nullptr, a.ptr(), b.ptr()));
    U32 rank = 0;
    EXPECT_TRUE(vtable.keyRank(nullptr, b.ptr(), rank));
    EXPECT_EQ(rank, 2u);
    EXPECT_TRUE(vtable.keyRank(&key, nullptr, rank));
    EXPECT_EQ(rank, 1u);
    vtable.setNext(a.ptr(), b.ptr());
    EXPECT_EQ(a->fwkNext(), b.ptr());
    EXPECT_EQ(b->references(), 2u);
    vtable.setNext(a.ptr(), b.ptr());
    EXPECT_EQ(b->references(), 2u);
    vtable.setNext(a.ptr(), nullptr);
    EXPECT_EQ(b->references(), 1u);
}

TEST(HashMap, FindsByKeyAndWalks) {
    Map map;
    for (U64 key = 0; key < 100; ++key) map.insert(*new Member(key, static_cast<int>(key)));
    EXPECT_EQ(map[50]->value(), 50);
    EXPECT_EQ(map[100], nullptr);
    std::set<U64> keys;
    for (auto it = map.begin(); it; it.advance()) keys.insert(it->key());
    EXPECT_EQ(keys.size(), 100u);
    map.remove(*map[50]);
    EXPECT_EQ(map[50], nullptr);
    EXPECT_EQ(map.size(), 99u);
}

} // namespace
} // namespace Vel
