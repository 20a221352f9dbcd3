#include <Vel/KeyedCollection.h>

#include <Vel/MapMember.h>
#include <Vel/byteMix.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <tuple>
#include <vector>

namespace Vel {
namespace {

template <class K>
class Member final : public MapMember<K, int> {
public:
    using MapMember<K, int>::MapMember;
};

// A key of two fields with a hash of its own.
struct Pair {
    U32 kind = 0;
    U64 id = 0;

    U32 hash() const {
        ByteMix mix;
        mix.add(kind);
        mix.add(id);
        return mix.value();
    }

    bool operator==(const Pair&) const = default;
    auto operator<=>(const Pair&) const = default;
};

// The order by its definition: reversed fold, then key.
template <class K>
struct ByReversedFold {
    bool operator()(const K& a, const K& b) const {
        const U32 x = bitReverse(keyFold(a));
        const U32 y = bitReverse(keyFold(b));
        return x != y ? x < y : a < b;
    }
};

template <class K>
using Model = std::map<K, int, ByReversedFold<K>>;

template <class K>
void expectSame(const KeyedCollection<Member<K>>& collection, const Model<K>& model) {
    ASSERT_EQ(collection.count(), model.size());
    auto expected = model.begin();
    for (const auto& [key, value] : collection) {
        ASSERT_TRUE(key == expected->first);
        ASSERT_EQ(value, expected->second);
        ++expected;
    }
    ASSERT_EQ(collection.auditErrors(9), 0u);
}

template <class K, class MakeKey>
void agreesWithModel(unsigned seed, MakeKey makeKey) {
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    KeyedCollection<Member<K>> collection;
    Model<K> model;
    for (int i = 0; i < 100'000; ++i) {
        const K key = makeKey(random);
        const int value = static_cast<int>(random() % 1000);
        switch (random() % 9) {
        case 0:
        case 1:
        case 2:
            collection.set(key, value);
            model[key] = value;
            break;
        case 3:
        case 4: ASSERT_EQ(collection.del(key) != nullptr, model.erase(key) == 1); break;
        case 5:
            ASSERT_EQ(collection.value(key), model.contains(key) ? model.at(key) : 0);
            ASSERT_EQ(collection.find(key) != nullptr, model.contains(key));
            break;
        case 6:
            if (!model.empty()) {
                ASSERT_TRUE(collection.first()->key() == model.begin()->first);
            } else {
                ASSERT_EQ(collection.first(), nullptr);
            }
            break;
        case 7: {
            const auto position = collection.behind(key);
            const auto expected = model.upper_bound(key);
            ASSERT_EQ(static_cast<bool>(position), expected != model.end());
            ASSERT_TRUE(!position || position.key() == expected->first);
            break;
        }
        default:
            if (random() % 2000 == 0) expectSame(collection, model);
            if (random() % 20'000 == 0) {
                collection.delAll();
                model.clear();
            }
        }
    }
    expectSame(collection, model);
    while (collection.first() != nullptr) {
        auto position = collection.begin();
        ASSERT_TRUE(position.key() == model.begin()->first);
        model.erase(model.begin());
        collection.del(position);
        ASSERT_EQ(static_cast<bool>(position), !model.empty());
        ASSERT_TRUE(!position || position.key() == model.begin()->first);
    }
    expectSame(collection, model);
}

TEST(KeyedCollection, AWalkGoesOnBehindAKeyOfACrowdedHash) {
    KeyedCollection<Member<U64>> collection;
    for (U64 n = 0; n < 100; ++n) collection.create(n << 32 | n, 1); // all of one hash
    for (U64 n = 0; n < 100; n += 2) {
        collection.del(n << 32 | n);
        const auto position = collection.behind(n << 32 | n);
        ASSERT_TRUE(position);
        EXPECT_EQ(position.key(), (n + 1) << 32 | (n + 1));
    }
    EXPECT_FALSE(collection.behind(U64{99} << 32 | 99));
    EXPECT_EQ(collection.behind(U64{5} << 32 | 5).key(), U64{7} << 32 | 7);
}

TEST(KeyedCollection, AgreesWithAModelForEveryKindOfKey) {
    agreesWithModel<U16>(1, [](auto& random) { return static_cast<U16>(random() % 3000); });
    agreesWithModel<U32>(2, [](auto& random) { return static_cast<U32>(random() % 5000); });
    agreesWithModel<U32>(3, [](auto& random) { return static_cast<U32>(random() % 4000 * 4096); });
    agreesWithModel<int>(4, [](auto& random) { return static_cast<int>(random() % 4000) - 2000; });
    agreesWithModel<U64>(5, [](auto& random) { return U64{random() % 4000} << 20; });
    agreesWithModel<Pair>(6, [](auto& random) {
        return Pair{static_cast<U32>(random() % 3), random() % 1000};
    });
}

TEST(KeyedCollection, AgreesWithAModelWhenAllHashesAreEqual) {
    agreesWithModel<U64>(7, [](auto& random) {
        const U64 half = random() % 2000;
        return half << 32 | half; // folds to 0
    });
    agreesWithModel<U64>(8, [](auto& random) {
        const U64 half = random() % 100;
        return half << 32 | (half ^ (random() % 3 << 30)); // folds to three values that differ late
    });
}

TEST(KeyedCollection, TellsSwappedHalvesApart) {
    KeyedCollection<Member<U64>> collection;
    collection.set(0x0000000100000002, 12);
    collection.set(0x0000000200000001, 21);
    EXPECT_EQ(collection.count(), 2u);
    EXPECT_EQ(collection.value(0x0000000100000002), 12);
    EXPECT_EQ(collection.value(0x0000000200000001), 21);
}

TEST(KeyedCollection, OverwritingKeepsTheMember) {
    KeyedCollection<Member<U32>> collection;
    const auto member = collection.create(U32{5}, 1);
    collection.set(5, 2);
    EXPECT_EQ(member->value(), 2);
    EXPECT_EQ(collection.find(5), member.ptr());
    EXPECT_EQ(member->references(), 2u);
    EXPECT_EQ(collection.del(5), member);
    EXPECT_EQ(member->references(), 1u);
    EXPECT_FALSE(collection.del(5));
}

TEST(KeyedCollection, OrderComesFromTheMembersAlone) {
    std::vector<U32> keys(5000);
    for (U32 i = 0; i < keys.size(); ++i) keys[i] = i * 7;
    KeyedCollection<Member<U32>> a;
    for (const U32 key : keys) a.set(key, 0);
    std::mt19937 random(11);
    std::ranges::shuffle(keys, random);
    KeyedCollection<Member<U32>> b;
    for (U32 i = 0; i < 20'000; ++i) b.set(i, 1);
    b.delAll();
    for (const U32 key : keys) b.set(key, 0);
    auto position = b.begin();
    for (const auto& [key, value] : a) {
        ASSERT_EQ(key, position.key());
        ++position;
    }
    EXPECT_TRUE(a == b);
}

TEST(KeyedCollection, CopiesCloneTheMembers) {
    KeyedCollection<Member<U32>> a;
    a.set(1, 1);
    a.set(2, 2);
    KeyedCollection<Member<U32>> b(a);
    EXPECT_NE(a.find(1), b.find(1));
    b.set(1, 5);
    EXPECT_EQ(a.value(1), 1);
    EXPECT_FALSE(a == b);
    a = b;
    EXPECT_TRUE(a == b);
    const auto& self = a;
    a = self;
    EXPECT_EQ(a.count(), 2u);
}

TEST(KeyedCollection, ComparesByCountEntriesAndMapOrder) {
    KeyedCollection<Member<U32>> a;
    KeyedCollection<Member<U32>> b;
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a < b);
    b.set(1, 0);
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b < a);
    a.set(1, 1);
    EXPECT_TRUE(b < a);
    EXPECT_FALSE(a == b);
}

TEST(KeyedCollection, DrainingTheFirstMemberIsLinear) {
    KeyedCollection<Member<U32>> collection;
    for (U32 i = 0; i < 1'000'000; ++i) collection.create(i, 0);
    U32 last = 0;
    for (U32 drained = 0; drained < 1'000'000; ++drained) {
        auto first = collection.begin();
        ASSERT_TRUE(drained == 0 || last < bitReverse(first.key()));
        last = bitReverse(first.key());
        collection.del(first);
    }
    EXPECT_EQ(collection.count(), 0u);
}

} // namespace
} // namespace Vel
