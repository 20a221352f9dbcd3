#include <Vel/networkByteOrder.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(networkByteOrder, PutsTheHighestByteFirstAtAnyAddress) {
    U8 bytes[9] = {};
    storeNetworkOrdered(bytes + 1, U64{0x0102030405060708});
    for (U8 i = 0; i < 9; ++i) EXPECT_EQ(bytes[i], i);
    EXPECT_EQ(loadNetworkOrdered<U64>(bytes + 1), 0x0102030405060708u);
    EXPECT_EQ(loadNetworkOrdered<U32>(bytes + 1), 0x01020304u);
    EXPECT_EQ(loadNetworkOrdered<U16>(bytes + 3), 0x0304u);
    EXPECT_EQ(loadNetworkOrdered<U8>(bytes + 8), 8u);
    static_assert(networkOrdered(networkOrdered(U32{7})) == 7);
}

} // namespace
} // namespace Vel
