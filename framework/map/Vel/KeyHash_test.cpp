#include <Vel/KeyHash.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

enum class Colour : S32 { red, green };

static_assert(keyFold(U16{0xffff}) == 0xffff);
static_assert(keyFold(-1) == 0xffffffff);
static_assert(keyFold(U32{0xdeadbeef}) == 0xdeadbeef);
static_assert(keyFold(U64{0x0000000300000005}) == 6);
static_assert(keyFold(true) == 1);
static_assert(keyFold(Colour::green) == 1);
static_assert(keyHash(U32{1}) == 0x80000000);
static_assert(keyRank(U64{0x8000000300000005}) == 0x80000003);
static_assert(keyRank(S64{-1}) == 0x7fffffff);
static_assert(keyRank(S64{0}) == 0x80000000);
static_assert(hasKeyRank<U64> && !hasKeyRank<U32> && !hasKeyRank<Colour>);

TEST(KeyHash, ComparesFoldsAsTheirReversals) {
    const U32 folds[] = {0, 1, 2, 3, 4, 0x80000000, 0xffffffff, 0x12345678};
    for (const U32 a : folds)
        for (const U32 b : folds) EXPECT_EQ(hashesBelow(a, b), bitReverse(a) < bitReverse(b));
}

} // namespace
} // namespace Vel
