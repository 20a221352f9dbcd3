// LineMap_test.cpp - members of one hash that are found by rank, through the maps that hold them;
// HashMap_test.cpp has keys without one.
#include <Vel/detail/LineMap.h>

#include <Vel/HashMap.h>
#include <Vel/MapMember.h>
#include <Vel/testing/MapModel.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vel {
namespace {

template <class Key>
class MemberOf final : public MapMember<Key, U32> {
public:
    using MapMember<Key, U32>::MapMember;
};

using Member = MemberOf<U64>;
using Map = HashMap<Member, U64, U32>;

// A key of this hash's fold.
constexpr U64 keyOf(U32 fold, U32 high) { return U64{high} << 32 | (high ^ fold); }

struct Family {
    const char* name;
    U64 (*key)(U32 number);
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

class HashMapOfRanks : public testing::TestWithParam<Family> {};

INSTANTIATE_TEST_SUITE_P(
    Families, HashMapOfRanks,
    testing::Values(Family{"ascending", [](U32 n) { return keyOf(5, n); }},
                    Family{"descending", [](U32 n) { return keyOf(5, ~n); }},
                    Family{"scattered", [](U32 n) { return keyOf(5, n * 2654435761U); }},
                    Family{"stride4096", [](U32 n) { return keyOf(5, n * 4096); }},
                    Family{"fewHashes", [](U32 n) { return keyOf(n % 7 * 4096, n); }},
                    Family{"oneAmongMany",
                           [](U32 n) { return n % 2 == 0 ? keyOf(5, n) : keyOf(n + 8, 0); }}),
    [](const auto& family) { return std::string(family.param.name); });

TEST_P(HashMapOfRanks, AgreesWithAModel) {
    Testing::agreeWithAModel<Map, Member>(GetParam().key, 0);
}

TEST_P(HashMapOfRanks, AgreesWithAModelInReservedRoom) {
    Testing::agreeWithAModel<Map, Member>(GetParam().key, 6000);
}

TEST_P(HashMapOfRanks, AWalkGoesOnWhateverElseChanges) {
    Testing::walkAmongChanges<Map, Member>(GetParam().key);
}

TEST_P(HashMapOfRanks, AMemberOfEqualKeyGivesWay) {
    Testing::equalKeysGiveWay<Map, Member>(GetParam().key);
}

TEST_P(HashMapOfRanks, TakingAKeyGivesItsMemberAway) {
    Testing::takeByKey<Map, Member>(GetParam().key);
}

TEST_P(HashMapOfRanks, EmptyingDropsEveryReference) {
    Testing::emptyAtOnce<Map, Member>(GetParam().key);
}

TEST(LineMap, SignedKeysKeepTheirOrder) {
    using Signed = MemberOf<S64>;
    HashMap<Signed, S64, U32> map;
    std::vector<S64> keys;
    for (U32 number = 0; number < 100; ++number)
        keys.push_back(static_cast<S64>(keyOf(5, (number - 50) * 0x01000193)));
    for (const S64 key : keys) map.insert(*Ptr<Signed>(new Signed(key, 0)));
    std::ranges::sort(keys);
    std::vector<S64> walked;
    for (const Signed& member : map) walked.push_back(member.key());
    EXPECT_EQ(walked, keys);
    EXPECT_EQ(map.auditErrors(9), 0u);
}

TEST(LineMap, TakeLittleMoreRoomThanOtherMembers) {
    constexpr U32 members = 10'000;
    Map ascending;
    Map scattered;
    for (U32 n = 0; n < members; ++n) {
        ascending.insert(*Ptr<Member>(new Member(keyOf(5, n), n)));
        scattered.insert(*Ptr<Member>(new Member(keyOf(5, n * 2654435761U), n)));
    }
    EXPECT_LT(ascending.heapBytes(), members * 80);
    EXPECT_LT(scattered.heapBytes(), members * 80);
}

} // namespace
} // namespace Vel
