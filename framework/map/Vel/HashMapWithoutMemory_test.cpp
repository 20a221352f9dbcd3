// HashMapWithoutMemory_test.cpp - what a map does when the general allocator has nothing more to
// give.
#include <Vel/HashMap.h>

#include <Vel/MapMember.h>
#include <Vel/testing/ScarceMemory.h>
#include <cstddef>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

namespace Vel {
namespace {

using Testing::allocationsLeft;
using Testing::always;

class Member final : public MapMember<U64, U32> {
public:
    using MapMember::MapMember;
};

using Map = HashMap<Member, U64, U32>;

struct Family {
    const char* name;
    U64 (*key)(U32 number);
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

class HashMapWithoutMemory : public testing::TestWithParam<Family> {
protected:
    static constexpr U32 members = 300;

    HashMapWithoutMemory() {
        for (U32 number = 0; number < members; ++number)
            all.push_back(new Member(GetParam().key(number), number));
    }

    ~HashMapWithoutMemory() override { allocationsLeft = always; }

    // Inserts every member that is not there yet; says how many found no place.
    U32 insertAll() {
        U32 refused = 0;
        for (const Ptr<Member>& member : all) {
            if (map.find(member->key()) != nullptr) continue;
            const std::size_t before = map.size();
            try {
                map.insert(*member);
            } catch (const std::bad_alloc&) {
                ++refused;
                EXPECT_EQ(map.size(), before);
                EXPECT_EQ(member->references(), 1u);
                EXPECT_EQ(map.find(member->key()), nullptr);
            }
        }
        return refused;
    }

    void expectInOrder() const {
        const Member* last = nullptr;
        U32 walked = 0;
        for (const Member& member : map) {
            EXPECT_TRUE(last == nullptr || Map::ordersBefore(last->key(), member.key()));
            last = &member;
            ++walked;
        }
        EXPECT_EQ(walked, map.size());
    }

    std::vector<Ptr<Member>> all;
    Map map;
};

INSTANTIATE_TEST_SUITE_P(
    Families, HashMapWithoutMemory,
    testing::Values(Family{"sequential", [](U32 n) { return U64{n}; }},
                    Family{"twoStrides",
                           [](U32 n) { return n % 2 == 0 ? U64{n} * 4096 : U64{n} * 4096 + 65; }},
                    Family{"oneHash", [](U32 n) { return U64{n} << 32 | n; }},
                    Family{"fewHashes", [](U32 n) { return U64{n} << 32 | (n ^ n % 7); }}),
    [](const auto& family) { return std::string(family.param.name); });

TEST_P(HashMapWithoutMemory, KeepsItsMembersAndGoesOnWhenMemoryIsBack) {
    for (int given = 0; given < 40 && !HasFailure(); ++given) {
        SCOPED_TRACE(std::to_string(given) + " allocations are granted");
        allocationsLeft = given;
        const U32 refused = insertAll();
        allocationsLeft = always;
        EXPECT_EQ(map.size(), members - refused);
        EXPECT_EQ(map.auditErrors(9), 0u);
        expectInOrder();
        EXPECT_EQ(insertAll(), 0u);
        EXPECT_EQ(map.size(), members);
        EXPECT_EQ(map.auditErrors(9), 0u);
        expectInOrder();
        allocationsLeft = 0;
        for (const Ptr<Member>& member : all) map.remove(*member);
        EXPECT_EQ(map.size(), 0u) << "removing needs no memory";
        map.emptyAllBuckets();
        EXPECT_EQ(map.heapBytes(), 0u);
        for (const Ptr<Member>& member : all) EXPECT_EQ(member->references(), 1u);
        allocationsLeft = always;
    }
}

TEST_P(HashMapWithoutMemory, AnUnplacedReservationChangesNothing) {
    EXPECT_EQ(insertAll(), 0u);
    map.emptyAllBuckets();
    allocationsLeft = 0;
    EXPECT_THROW(map.reserve(900), std::bad_alloc);
    for (U32 number = 0; number < 5; ++number) map.insert(*all[number]);
    EXPECT_THROW(map.reserve(900), std::bad_alloc);
    allocationsLeft = always;
    EXPECT_EQ(map.size(), 5u);
    EXPECT_EQ(map.auditErrors(9), 0u);
    EXPECT_EQ(insertAll(), 0u);
    EXPECT_EQ(map.size(), members);
}

} // namespace
} // namespace Vel
