#include <Vel/SharedBits.h>

#include <gtest/gtest.h>
#include <initializer_list>

namespace Vel {
namespace {

constexpr unsigned sharedBy(std::initializer_list<U32> folds) {
    SharedBits shared;
    for (const U32 fold : folds) shared.add(fold);
    return shared.bits();
}

static_assert(sharedBy({}) == 32);
static_assert(sharedBy({5}) == 32);
static_assert(sharedBy({5, 5}) == 32);
static_assert(sharedBy({5, 4}) == 0);
static_assert(sharedBy({3, 7, 11}) == 2);
static_assert(sharedBy({0x80000000, 0}) == 31);
static_assert(sharedBy({0, 16, 24, 48}) == 3);

TEST(SharedBits, KnowsHowManyKeysToldItAndTheFirst) {
    SharedBits shared;
    EXPECT_EQ(shared.keys(), 0u);
    shared.add(6);
    shared.add(14);
    shared.add(14);
    EXPECT_EQ(shared.keys(), 3u);
    EXPECT_EQ(shared.fold(), 6u);
    EXPECT_EQ(shared.bits(), 3u);
}

} // namespace
} // namespace Vel
