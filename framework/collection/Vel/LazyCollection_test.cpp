#include <Vel/LazyCollection.h>

#include <Vel/IndexSet.h>
#include <Vel/MapMember.h>
#include <Vel/PlainMap.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace Vel {
namespace {

class Number final : public MapMember<U32, U32> {
public:
    using MapMember::MapMember;
};

class Flag final : public MapMember<U32, bool> {
public:
    using MapMember::MapMember;
};

using Numbers = LazyCollection<Number, PlainMap<U32>>;
using Flags = LazyCollection<Flag, IndexSet>;

struct ByReversedKey {
    bool operator()(U32 a, U32 b) const { return bitReverse(a) < bitReverse(b); }
};

template <class Collection>
class LazyCollectionOf : public testing::Test {
protected:
    using Value = typename Collection::Value;
    using Entry = typename Collection::Entry;
    using Model = std::map<U32, Value, ByReversedKey>;

    void set(U32 key, Value value) {
        collection.set(key, value);
        model.insert_or_assign(key, value);
    }

    void remove(U32 key) {
        Value value{};
        const auto expected = model.find(key);
        ASSERT_EQ(collection.take(key, value), expected != model.end());
        if (expected == model.end()) return;
        ASSERT_EQ(value, expected->second);
        model.erase(expected);
        objects.erase(key);
    }

    // The object that stands for the key, the same one each time.
    void look(U32 key) {
        Entry* const object = collection.find(key);
        const auto expected = model.find(key);
        ASSERT_EQ(object != nullptr, expected != model.end());
        if (object == nullptr) return;
        ASSERT_EQ(object->key(), key);
        ASSERT_EQ(object->value(), expected->second);
        const auto [known, isNew] = objects.try_emplace(key, object);
        ASSERT_EQ(known->second.ptr(), object);
        ASSERT_EQ(object->references(), 2u); // the collection's and ours
    }

    void expectSame() const {
        ASSERT_EQ(collection.count(), model.size());
        auto expected = model.begin();
        for (const auto& [key, value] : collection) {
            ASSERT_NE(expected, model.end());
            ASSERT_EQ(key, expected->first);
            ASSERT_EQ(value, expected->second);
            ++expected;
        }
        ASSERT_EQ(expected, model.end());
        ASSERT_EQ(collection.auditErrors(9), 0u);
    }

    // Every operation at random; keys out of `keys`.
    void play(const std::vector<U32>& keys, unsigned seed, unsigned steps) {
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t count) { return random() % count; };
        typename Collection::Iterator walk;
        for (unsigned step = 0; step < steps; ++step) {
            const U32 key = keys[pick(keys.size())];
            const auto value = static_cast<Value>(random());
            switch (pick(8)) {
            case 0:
            case 1:
            case 2: set(key, value); break;
            case 3: remove(key); break;
            case 4: pick(4) == 0 ? look(key) : void(); break;
            case 5:
                if (model.contains(key)) break;
                if (pick(2) == 0)
                    collection.add(key, value);
                else
                    objects.try_emplace(key, collection.create(key, value));
                model.emplace(key, value);
                break;
            case 6:
                if (const auto known = objects.find(key); known != objects.end()) {
                    known->second->valueIs(value);
                    model.insert_or_assign(key, value);
                }
                ASSERT_EQ(collection.has(key), model.contains(key));
                ASSERT_EQ(collection.value(key),
                          model.contains(key) ? model.find(key)->second : Value());
                break;
            default:
                if (!walk) {
                    walk = collection.begin();
                    ASSERT_EQ(static_cast<bool>(walk), !model.empty());
                    if (walk) {
                        ASSERT_EQ(walk.key(), model.begin()->first);
                    }
                    break;
                }
                const auto behind = model.upper_bound(walk.key());
                walk.advance();
                ASSERT_EQ(static_cast<bool>(walk), behind != model.end());
                if (walk) {
                    ASSERT_EQ(*walk, std::pair(behind->first, behind->second));
                }
            }
            if (step % (steps / 16) == 0) expectSame();
            if (testing::Test::HasFatalFailure()) return;
        }
        expectSame();
    }

    Collection collection;
    Model model;
    std::map<U32, Ptr<Entry>> objects;
};

using Collections = testing::Types<Numbers, Flags>;
TYPED_TEST_SUITE(LazyCollectionOf, Collections);

std::vector<U32> keysOf(unsigned count, U32 (*key)(U32)) {
    std::vector<U32> keys;
    for (U32 i = 0; i < count; ++i) keys.push_back(key(i));
    return keys;
}

TYPED_TEST(LazyCollectionOf, AgreesWithAModel) {
    const auto small = keysOf(12, [](U32 i) { return i; });
    const auto indexes = keysOf(700, [](U32 i) { return i; });
    const auto scattered = keysOf(700, [](U32 i) { return i * 2654435761U; });
    const auto hostile = keysOf(700, [](U32 i) { return i << 20 | 0x777; });
    unsigned seed = 0;
    for (const auto& keys : {small, indexes, scattered, hostile}) {
        for (const U32 room : {0U, 1U, 512U}) {
            this->collection.reserve(room);
            this->play(keys, ++seed, 16000);
            this->collection.delAll();
            this->model.clear();
            this->objects.clear();
            this->expectSame();
            if (this->HasFatalFailure()) FAIL() << "seed " << seed;
        }
    }
}

TYPED_TEST(LazyCollectionOf, MakesAnObjectOnlyForWhoAsks) {
    this->collection.reserve(100);
    for (U32 key = 0; key < 100; ++key) this->set(key, true);
    this->expectSame();
    EXPECT_TRUE(this->collection.has(7));
    EXPECT_EQ(this->collection.value(7), 1u);
    EXPECT_EQ(this->collection.objects(), 0u);
    auto* const member = this->collection.find(7);
    EXPECT_EQ(this->collection.objects(), 1u);
    EXPECT_EQ(member->references(), 1u);
    EXPECT_EQ(this->collection.find(7), member);
    this->set(7, false);
    EXPECT_EQ(member->value(), 0u);
    member->valueIs(true);
    EXPECT_EQ(this->collection.value(7), 1u);
    this->model.insert_or_assign(7, true);
    this->expectSame();
    EXPECT_EQ(this->collection.find(100), nullptr);
    EXPECT_EQ(this->collection.objects(), 1u);
}

TYPED_TEST(LazyCollectionOf, ARemovedMemberIsGivenAway) {
    this->collection.reserve(4);
    this->set(1, true);
    this->set(2, true);
    const auto taken = this->collection.del(2);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(taken->key(), 2u);
    EXPECT_EQ(taken->value(), 1u);
    EXPECT_EQ(taken->references(), 1u);
    EXPECT_EQ(this->collection.del(2), nullptr);
    auto position = this->collection.begin();
    this->collection.del(position);
    EXPECT_FALSE(position);
    EXPECT_EQ(this->collection.count(), 0u);
}

TYPED_TEST(LazyCollectionOf, AWalkStaysWhereItIsWhateverHappens) {
    this->collection.reserve(8);
    for (const U32 key : {0U, 4U, 2U, 6U, 1U}) this->collection.set(key, true);
    auto walk = this->collection.begin();
    EXPECT_EQ(walk.key(), 0u);
    EXPECT_EQ(walk++.key(), 0u);
    EXPECT_EQ(walk.key(), 4u);
    this->collection.find(4);
    this->collection.remove(2);
    this->collection.find(6);
    EXPECT_EQ((*walk).second, 1u);
    EXPECT_EQ(walk.entry(), this->collection.find(4));
    ++walk;
    EXPECT_EQ(walk.key(), 6u);
    this->collection.delAll();
    this->collection.set(5, true);
    EXPECT_EQ((*walk).second, 0u);
    ++walk;
    EXPECT_EQ(walk.key(), 5u);
    EXPECT_FALSE(walk == this->collection.end());
    EXPECT_TRUE(walk == this->collection.begin());
    ++walk;
    EXPECT_TRUE(walk == this->collection.end());
}

TYPED_TEST(LazyCollectionOf, AWalkBeginsBehindAnyKey) {
    this->collection.reserve(16);
    EXPECT_FALSE(this->collection.behind(0));
    for (const U32 key : {0U, 4U, 10U, 6U, 40U, 1U}) this->set(key, true);
    for (const U32 key : {4U, 40U}) this->collection.find(key); // an object
    for (U32 key = 0; key < 64; ++key) {
        const auto at = this->collection.behind(key);
        const auto expected = this->model.upper_bound(key);
        ASSERT_EQ(static_cast<bool>(at), expected != this->model.end()) << key;
        if (at) {
            EXPECT_EQ(at.key(), expected->first) << key;
        }
    }
}

// A bucket that is full makes objects of its own; nobody sees them.
TEST(LazyCollection, CrowdedNumbersAreNoObjectsOfTheCollection) {
    Numbers numbers;
    for (U32 i = 0; i < 5000; ++i) numbers.add(i << 16 | 3, i);
    EXPECT_EQ(numbers.count(), 5000u);
    EXPECT_EQ(numbers.objects(), 0u);
    for (U32 i = 0; i < 5000; ++i) ASSERT_EQ(numbers.value(i << 16 | 3), i);
    EXPECT_EQ(numbers.auditErrors(9), 0u);
}

TEST(LazyCollection, EveryNumberCanBeHeld) {
    Numbers numbers;
    for (const U32 number : {0U, 0x7fffffffU, 0x80000000U, 0xffffffffU, 5U}) {
        numbers.set(9, number);
        EXPECT_EQ(numbers.value(9), number);
        numbers.set(number, number);
        EXPECT_EQ(numbers.value(number), number);
    }
    EXPECT_EQ(numbers.count(), 6u);
    EXPECT_EQ(numbers.auditErrors(9), 0u);
}

TEST(LazyCollection, OnlyIndexesBelowTheLimitNeedNoObject) {
    Flags flags;
    flags.set(0, true);
    EXPECT_EQ(flags.objects(), 1u);
    flags.delAll();
    flags.reserve(5);
    for (const U32 index : {0U, 4U, 7U}) flags.set(index, true);
    EXPECT_EQ(flags.objects(), 0u);
    flags.set(8, true);
    flags.set(3, false);
    EXPECT_EQ(flags.objects(), 2u);
    EXPECT_EQ(flags.count(), 5u);
    flags.set(4, false);
    EXPECT_EQ(flags.objects(), 3u);
    EXPECT_FALSE(flags.value(4));
    EXPECT_TRUE(flags.has(4));
    EXPECT_EQ(flags.auditErrors(9), 0u);
}

TEST(LazyCollection, TheFirstIsTakenInOrder) {
    Flags flags;
    flags.reserve(8);
    for (U32 index = 0; index < 8; ++index) flags.add(index, true);
    flags.find(4);
    flags.find(0);
    std::string order;
    while (flags.count() != 0) order += std::to_string(flags.takeFirst());
    EXPECT_EQ(order, "04261537");
}

} // namespace
} // namespace Vel
