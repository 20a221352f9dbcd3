#include <Vel/bitReverse.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

static_assert(bitReverse(0) == 0);
static_assert(bitReverse(1) == 0x80000000);
static_assert(bitReverse(0x00000002) == 0x40000000);
static_assert(bitReverse(0x12345678) == 0x1e6a2c48);

TEST(bitReverse, MovesEachBitToItsMirrorPlaceAndBack) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(bitReverse(U32{1} << bit), U32{1} << (31 - bit));
        EXPECT_EQ(bitReverse(bitReverse(0xdeadbeef << bit)), 0xdeadbeef << bit);
    }
}

} // namespace
} // namespace Vel
