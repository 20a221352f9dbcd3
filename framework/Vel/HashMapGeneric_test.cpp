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
