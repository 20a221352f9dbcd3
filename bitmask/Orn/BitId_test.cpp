#include <Orn/BitId.h>

#include <Vel/testing/Registered.h>
#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>

namespace Orn {
namespace {

using namespace Vel::Testing;
using Vel::U8;

TEST(BitId, HoldsEveryByteAndComparesAsUnsigned) {
    static_assert(sizeof(BitId) == 1);
    for (unsigned a = 0; a < 256; ++a)
        for (unsigned b = 0; b < 256; ++b)
            ASSERT_TRUE(
                comparesAs(BitId(static_cast<U8>(a)), BitId(static_cast<U8>(b)), a < b, a == b));
}

TEST(BitId, NullNamesNoBit) { EXPECT_EQ(BitId::null(), 255u); }

TEST(BitId, PrintsReadsAndLogsEveryValue) {
    for (unsigned v = 0; v < 256; ++v) {
        const BitId id(static_cast<U8>(v));
        ASSERT_EQ(id.value(), v);
        ASSERT_EQ(text(id), std::to_string(v));
        ASSERT_EQ(parsed<BitId>(text(id)), id);
        ASSERT_EQ(logged(id), std::vector<U8>{static_cast<U8>(v)});
        ASSERT_EQ(fromLog<BitId>({static_cast<U8>(v)}), id);
    }
}

TEST(BitId, NamesItsAttributeWhenItCannotBeRead) {
    EXPECT_EQ(parseError<BitId>("x"),
              "in attribute 'value': cannot convert \"x\" at column 0 to long long");
}

TEST(BitId, IsRegistered) {
    EXPECT_EQ(Vel::Testing::registered("Orn::BitId"), "value(value: U8)\n"
                                                      "2 value: U8; stored\n"
                                                      "3 null: U8\n");
}

} // namespace
} // namespace Orn
