#include <Vel/HashMap.h>

#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/testing/MapModel.h>
#include <bit>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace Vel {
namespace {

U64 comparisons = 0; // of keys, by any map

// A number as a key, with a hash that may hide some of its bits, and with its comparisons counted.
struct Key {
    U64 number = 0;
    U32 hashMask = 0xffffffffU;

    U32 hash() const { return static_cast<U32>(number) & hashMask; }

    bool operator==(const Key& other) const {
        ++comparisons;
        return number == other.number;
    }

    bool operator<(const Key& other) const {
        ++comparisons;
        return number < other.number;
    }
};

class Member final : public MapMember<Key, U32> {
public:
    using MapMember::MapMember;
};

using Map = HashMap<Member, Key, U32>;

// How the keys of one family follow each other.
struct Family {
    const char* name;
    Key (*key)(U32 number);
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

const Family families[] = {
    {"sequential", [](U32 n) { return Key{n}; }},
    {"scattered", [](U32 n) { return Key{n * 2654435761U}; }},
    {"stride4", [](U32 n) { return Key{n * 4}; }},
    {"stride64", [](U32 n) { return Key{n * 64}; }},
    {"stride4096", [](U32 n) { return Key{n * 4096}; }},
    {"twoStrides", [](U32 n) { return Key{n % 2 == 0 ? n * 4096 : n * 4096 + 65}; }},
    {"topBits", [](U32 n) { return Key{n << 12 | n >> 20}; }},
    {"downwards", [](U32 n) { return Key{~n}; }},
    {"oneHash",
     [](U32 n) {
         return Key{n, 0};
     }},
    {"fewHashes",
     [](U32 n) {
         return Key{n, 0x80008000U};
     }},
    {"halfTheHash",
     [](U32 n) {
         return Key{n * 2654435761U, 0xffff0000U};
     }},
};

class HashMapOf : public testing::TestWithParam<Family> {
protected:
    static Key keyOf(U32 number) { return GetParam().key(number); }

    static void insert(Map& map, U32 number) {
        map.insert(*Ptr<Member>(new Member(keyOf(number), number)));
    }

    // The most comparisons that one call may cost in a map of so many members.
    static U64 most(std::size_t members) { return 40 + 4 * std::bit_width(members); }
};

INSTANTIATE_TEST_SUITE_P(Families, HashMapOf, testing::ValuesIn(families),
                         [](const auto& family) { return std::string(family.param.name); });

TEST_P(HashMapOf, AgreesWithAModel) { Testing::agreeWithAModel<Map, Member>(GetParam().key, 0); }

TEST_P(HashMapOf, AgreesWithAModelInReservedRoom) {
    Testing::agreeWithAModel<Map, Member>(GetParam().key, 6000);
}

TEST_P(HashMapOf, AWalkGoesOnWhateverElseChanges) {
    Testing::walkAmongChanges<Map, Member>(GetParam().key);
}

TEST_P(HashMapOf, NoCallLooksAtManyMembers) {
    constexpr U32 members = 50'000;
    Map map;
    const auto costs = [&map](auto call) {
        comparisons = 0;
        call();
        EXPECT_LE(comparisons, most(map.size())) << map.size() << " members";
    };
    for (U32 number = 0; number < members && !HasFailure(); ++number) {
        costs([&] { insert(map, number); });
        costs([&] { EXPECT_EQ(map.find(keyOf(number))->value(), number); });
        costs([&] { EXPECT_EQ(map.find(keyOf(number + members)), nullptr); });
    }
    EXPECT_EQ(map.auditErrors(9), 0u);
    U32 walked = 0;
    for (const Member* at = map.first(); at != nullptr && !HasFailure(); ++walked)
        costs([&] { at = map.next(*at); });
    EXPECT_EQ(walked, members);
    for (U32 number = 0; number < members && !HasFailure(); ++number)
        costs([&] { map.remove(*map.find(keyOf(number))); });
    EXPECT_EQ(map.size(), 0u);
}

TEST_P(HashMapOf, OrderComesFromTheMembersAlone) {
    constexpr U32 members = 3000;
    Map upwards;
    for (U32 number = 0; number < members; ++number) insert(upwards, number);
    Map reserved;
    reserved.reserve(members);
    for (U32 number = members; number-- > 0;) insert(reserved, number);
    Map shrunk;
    for (U32 number = 0; number < 20 * members; ++number) insert(shrunk, number);
    for (U32 number = members; number < 20 * members; ++number)
        shrunk.remove(*shrunk.find(keyOf(number)));
    const Map copy = shrunk;
    for (const Map* other : std::initializer_list<const Map*>{&reserved, &shrunk, &copy}) {
        EXPECT_EQ(other->auditErrors(9), 0u);
        ASSERT_EQ(other->size(), members);
        auto at = other->begin();
        for (const Member& member : upwards) {
            ASSERT_EQ(at->value(), member.value());
            ++at;
        }
    }
}

TEST_P(HashMapOf, AMemberOfEqualKeyGivesWay) {
    Testing::equalKeysGiveWay<Map, Member>(GetParam().key);
}

TEST_P(HashMapOf, TakingAKeyGivesItsMemberAway) { Testing::takeByKey<Map, Member>(GetParam().key); }

TEST_P(HashMapOf, EmptyingDropsEveryReference) {
    Testing::emptyAtOnce<Map, Member>(GetParam().key);
}

TEST(HashMap, MembersOfOneLineNeedNoMemoryBesideThem) {
    constexpr U32 seats = sizeof(void*) == 8 ? 5 : 7;
    Map map;
    for (U32 number = 0; number < seats; ++number)
        map.insert(*Ptr<Member>(new Member(Key{number}, number)));
    EXPECT_EQ(map.heapBytes(), 0u);
    map.insert(*Ptr<Member>(new Member(Key{seats}, seats)));
    EXPECT_GT(map.heapBytes(), 0u);
}

TEST(HashMap, ReservedRoomIsUsedAndGivenBack) {
    for (const U32 stride : {1U, 4U, 16U}) {
        SCOPED_TRACE("stride " + std::to_string(stride));
        Map map;
        map.reserve(10'000);
        const std::size_t bytes = map.heapBytes();
        EXPECT_GT(bytes, 10'000 * sizeof(void*));
        for (U32 number = 0; number < 10'000; ++number)
            map.insert(*Ptr<Member>(new Member(Key{number * stride}, number)));
        EXPECT_EQ(map.heapBytes(), bytes) << "inserting did not grow the map";
        map.reserve(0);
        EXPECT_EQ(map.heapBytes(), bytes) << "a map with members keeps what it has";
        map.emptyAllBuckets();
        map.reserve(10'000);
        map.reserve(8);
        EXPECT_EQ(map.heapBytes(), 0u);
    }
}

TEST(HashMap, ReservedRoomSkipsTheBitsThatItsFirstMembersShare) {
    Map map;
    map.reserve(10'000);
    const auto insert = [&](U32 number) {
        map.insert(*Ptr<Member>(new Member(Key{number}, number)));
        ASSERT_EQ(map.auditErrors(9), 0u) << number;
    };
    for (U32 number = 0; number < 80; ++number) insert(8 * number + 3);
    for (U32 number = 0; number < 640; ++number)
        if (number % 8 != 3) insert(number);
    U32 walked = 0;
    U32 last = 0;
    for (const Member& member : map) {
        EXPECT_TRUE(walked++ == 0 || Map::ordersBefore(Key{last}, member.key()));
        last = member.value();
    }
    EXPECT_EQ(walked, 640u);
    for (U32 number = 0; number < 640; ++number) EXPECT_NE(map.find(Key{number}), nullptr);
    for (U32 number = 0; number < 640; ++number) {
        map.remove(*map.find(Key{number}));
        ASSERT_EQ(map.auditErrors(9), 0u) << number;
    }
    EXPECT_EQ(map.size(), 0u);
}

TEST(HashMap, ReservingLaterKeepsTheMembers) {
    for (const U32 members : {1U, 8U, 9U, 1000U}) {
        Map map;
        for (U32 number = 0; number < members; ++number)
            map.insert(*Ptr<Member>(new Member(Key{number * 4}, number)));
        map.reserve(20'000);
        EXPECT_EQ(map.auditErrors(9), 0u);
        EXPECT_EQ(map.size(), members);
        for (U32 number = 0; number < members; ++number) {
            ASSERT_NE(map.find(Key{number * 4}), nullptr);
            EXPECT_EQ(map.find(Key{number * 4})->references(), 1u);
        }
    }
}

TEST(HashMap, ReservingInTheMiddleOfAWalkSkipsNobody) {
    for (const U32 stop : {0U, 1U, 250U, 998U}) {
        Map map;
        for (U32 number = 0; number < 1000; ++number)
            map.insert(*Ptr<Member>(new Member(Key{number * 4}, number)));
        std::vector<bool> seen(1000);
        U32 steps = 0;
        for (const Member& member : map) {
            EXPECT_FALSE(seen[member.value()]);
            seen[member.value()] = true;
            if (steps++ == stop) map.reserve(20'000);
        }
        EXPECT_EQ(steps, 1000u);
    }
}

// Every second number is a member; of the others some share their hash with members.
TEST(HashMap, FindsTheFirstMemberBehindAnyKey) {
    for (const U32 hashMask : {0xffffffffU, 0xf0U, 0x3U, 0U}) {
        SCOPED_TRACE(hashMask);
        for (const unsigned count : {0U, 1U, 7U, 40U, 300U}) {
            Map map;
            for (unsigned i = 0; i < count; ++i) {
                const Ptr<Member> member = new Member(Key{U64{2 * i}, hashMask}, i);
                map.insert(*member);
            }
            for (unsigned number = 0; number <= 2 * count; ++number) {
                const Key key{number, hashMask};
                const Member* expected = nullptr;
                for (const Member& member : map) {
                    if (!Map::ordersBefore(key, member.key())) continue;
                    expected = &member;
                    break;
                }
                ASSERT_EQ(map.firstBehind(key), expected) << number << " of " << count;
            }
        }
    }
}

} // namespace
} // namespace Vel
