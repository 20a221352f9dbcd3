#include <Vel/Assert.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

void failWithValues() {
    const int index = -40;
    const U64 offset = 4008;
    const char* name = "slot";
    VEL_ASSERT(offset < 8, index, offset, name, (index < 0), static_cast<const void*>(nullptr));
}

TEST(AssertDeathTest, PrintsExpressionPlaceValuesAndFunction) {
    EXPECT_DEATH(
        failWithValues(),
        "^Assert_test.cpp:[0-9]+: assertion failed: offset < 8; index = -40, offset = 4008, "
        "name = slot, \\(index < 0\\) = true, static_cast<const void\\*>\\(nullptr\\) = null "
        "\\(in void Vel::\\(anonymous namespace\\)::failWithValues\\(\\)\\)\n$|"
        "\\(in void Vel::\\{anonymous\\}::failWithValues\\(\\)\\)\n$");
}

TEST(AssertDeathTest, PrintsTheTextThatIsGiven) {
    EXPECT_DEATH(VEL_ASSERT_AS("pos>=0 && pos<bits", 1 > 2),
                 "assertion failed: pos>=0 && pos<bits \\(in ");
}

TEST(Assert, LooksAtItsConditionOnce) {
    int looks = 0;
    VEL_ASSERT(++looks > 0, looks);
    EXPECT_EQ(looks, 1);
}

} // namespace
} // namespace Vel
