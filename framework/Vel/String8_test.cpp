#include <Vel/String8.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(String8, AppendingToACopyLeavesTheOriginalAlone) {
    String8 a("abc");
    String8 b(a);
    EXPECT_EQ(a.references(), 2u);
    b += "def";
    EXPECT_STREQ(a.charPtr(), "abc");
    EXPECT_STREQ(b.charPtr(), "abcdef");
    EXPECT_EQ(a.references(), 1u);
}

TEST(String8, AppendsItsOwnText) {
    String8 a("abc");
    for (int i = 0; i < 4; ++i) a += a;
    EXPECT_EQ(a.length(), 48u);
    EXPECT_EQ(a.view().substr(44), "cabc");
}

} // namespace
} // namespace Vel
