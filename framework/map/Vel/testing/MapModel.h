// MapModel.h - a map beside std::map, changed at random: for maps of any keys. Not installed.
//
// keyOf(number) is the key of a number, another for each; a member's value is its number.
#pragma once

#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <cstddef>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace Vel::Testing {

template <class Map, class Key>
auto emptyModel(Key (*)(U32 number)) {
    const auto before = [](const Key& a, const Key& b) { return Map::ordersBefore(a, b); };
    return std::map<Key, U32, decltype(before)>(before);
}

template <class Map, class Model>
void expectAlike(const Map& map, const Model& model) {
    ASSERT_EQ(map.auditErrors(9), 0u);
    ASSERT_EQ(map.size(), model.size());
    auto expected = model.begin();
    for (const auto& member : map) {
        ASSERT_EQ(member.value(), expected->second);
        ++expected;
    }
    std::size_t visited = 0;
    map.forEach([&](const auto& member) {
        const auto known = model.find(member.key());
        ASSERT_NE(known, model.end());
        ASSERT_EQ(known->second, member.value());
        ++visited;
    });
    ASSERT_EQ(visited, model.size());
}

// With room for so many from the start.
template <class Map, class Member, class Key>
void agreeWithAModel(Key (*keyOf)(U32 number), U32 room) {
    auto model = emptyModel<Map>(keyOf);
    Map map;
    map.reserve(room);
    const U32 seed = 20261121;
    SCOPED_TRACE("seed " + std::to_string(seed));
    auto random = [engine = std::mt19937(seed)]() mutable { return static_cast<U32>(engine()); };
    constexpr U32 operations = 100'000;
    for (U32 operation = 0; operation < operations; ++operation) {
        const U32 number = random() % 6000;
        const Key key = keyOf(number);
        const bool isGrowing = operation / (operations / 8) % 2 == 0;
        Member* const found = map.find(key);
        ASSERT_EQ(found != nullptr, model.contains(key));
        if (random() % 8 < (isGrowing ? 6U : 2U)) {
            if (found == nullptr) map.insert(*Ptr<Member>(new Member(key, number)));
            model[key] = number;
        } else if (found != nullptr) {
            map.remove(*found);
            model.erase(key);
        }
        if (operation % 64 == 0 && !model.empty()) {
            ASSERT_EQ(map.first()->value(), model.begin()->second);
        }
        if (operation % 10'000 == 0) {
            ASSERT_NO_FATAL_FAILURE(expectAlike(map, model));
        }
    }
    for (const auto& [key, number] : model) {
        ASSERT_EQ(map.first()->value(), number);
        map.remove(*map.first());
    }
    EXPECT_EQ(map.first(), nullptr);
    EXPECT_EQ(map.size(), 0u);
}

// A walk finds the next of those who are there now, however many change between two steps.
template <class Map, class Member, class Key>
void walkAmongChanges(Key (*keyOf)(U32 number)) {
    auto model = emptyModel<Map>(keyOf);
    Map map;
    auto random = [engine = std::mt19937(7)]() mutable { return static_cast<U32>(engine()); };
    const auto change = [&](const Member* kept) {
        const U32 number = random() % 3000;
        const Key key = keyOf(number);
        Member* const found = map.find(key);
        if (found == nullptr) {
            map.insert(*Ptr<Member>(new Member(key, number)));
            model[key] = number;
        } else if (found != kept) {
            map.remove(*found);
            model.erase(key);
        }
    };
    for (U32 i = 0; i < 1500; ++i) change(nullptr);
    for (const U32 changes : {0U, 1U, 40U}) { // between two steps
        U32 steps = 0;
        auto at = map.begin();
        while (at) {
            for (U32 i = 0; i < changes && random() % 2 != 0; ++i) change(at.entry());
            const auto expected = model.upper_bound(at->key());
            at.advance();
            ASSERT_EQ(static_cast<bool>(at), expected != model.end());
            if (at) {
                ASSERT_EQ(at->value(), expected->second);
            }
            ++steps;
        }
        EXPECT_GT(steps, 500u);
    }
    ASSERT_NO_FATAL_FAILURE(expectAlike(map, model));
}

// One that gave way, or is not here, may be removed: nothing changes.
template <class Map, class Member, class Key>
void equalKeysGiveWay(Key (*keyOf)(U32 number)) {
    constexpr U32 members = 500;
    Map map;
    std::vector<Ptr<Member>> old;
    for (U32 number = 0; number < members; ++number) {
        old.push_back(new Member(keyOf(number), number));
        map.insert(*old.back());
    }
    for (U32 number = 0; number < members; ++number)
        map.insert(*Ptr<Member>(new Member(keyOf(number), number + 1000)));
    EXPECT_EQ(map.size(), members);
    EXPECT_EQ(map.auditErrors(9), 0u);
    for (U32 number = 0; number < members; ++number) {
        EXPECT_EQ(old[number]->references(), 1u);
        EXPECT_EQ(old[number]->fwkNext(), nullptr);
        EXPECT_EQ(map.find(keyOf(number))->value(), number + 1000);
        map.remove(*old[number]);
    }
    EXPECT_EQ(map.size(), members);
}

template <class Map, class Member, class Key>
void takeByKey(Key (*keyOf)(U32 number)) {
    constexpr U32 members = 3000;
    Map map;
    for (U32 number = 0; number < members; ++number)
        map.insert(*Ptr<Member>(new Member(keyOf(number), number)));
    for (U32 number = 0; number < members; ++number) {
        EXPECT_EQ(map.take(keyOf(number + members)), nullptr);
        const Ptr<Member> taken = map.take(keyOf(number));
        ASSERT_NE(taken, nullptr);
        EXPECT_EQ(taken->value(), number);
        EXPECT_EQ(taken->references(), 1u);
        EXPECT_EQ(taken->fwkNext(), nullptr);
        EXPECT_EQ(map.take(keyOf(number)), nullptr);
        if (number % 500 == 0) {
            EXPECT_EQ(map.auditErrors(9), 0u);
        }
    }
    EXPECT_EQ(map.size(), 0u);
}

template <class Map, class Member, class Key>
void emptyAtOnce(Key (*keyOf)(U32 number)) {
    Map map;
    std::vector<Ptr<Member>> members;
    for (U32 number = 0; number < 3000; ++number) {
        members.push_back(new Member(keyOf(number), number));
        map.insert(*members.back());
    }
    map.emptyAllBuckets();
    EXPECT_EQ(map.size(), 0u);
    EXPECT_EQ(map.heapBytes(), 0u);
    EXPECT_EQ(map.first(), nullptr);
    for (const Ptr<Member>& member : members) {
        EXPECT_EQ(member->references(), 1u);
        EXPECT_EQ(member->fwkNext(), nullptr);
    }
}

} // namespace Vel::Testing
