#include <Vel/Assert.h>

#include <Vel/testing/AssertionTesting.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

using Testing::assertionFailed;

void failWithValues() {
    const int index = -40;
    const U64 offset = 4008;
    const char* name = "slot";
    VEL_ASSERT(offset < 8, index, offset, name, (index < 0), static_cast<const void*>(nullptr));
}

TEST(AssertDeathTest, PrintsExpressionPlaceValuesAndFunction) {
    const char* const text = "offset < 8; index = -40, offset = 4008, name = slot, "
                             "(index < 0) = true, static_cast<const void*>(nullptr) = null";
    EXPECT_DEATH(
        failWithValues(),
        testing::AnyOf(assertionFailed("Assert_test.cpp", text,
                                       "void Vel::{anonymous}::failWithValues()"), // GCC
                       assertionFailed("Assert_test.cpp", text,
                                       "void Vel::(anonymous namespace)::failWithValues()")));
}

TEST(AssertDeathTest, PrintsTheTextThatIsGiven) {
    const auto fail = [] { VEL_ASSERT_AS("pos>=0 && pos<bits", 1 > 2); };
    EXPECT_DEATH(fail(), testing::MatchesRegex("Assert_test.cpp:[0-9]+: assertion failed: "
                                               "pos>=0 && pos<bits \\(in [^\n]+\\)\n"));
}

TEST(Assert, LooksAtItsConditionOnce) {
    int looks = 0;
    VEL_ASSERT(++looks > 0, looks);
    EXPECT_EQ(looks, 1);
}

} // namespace
} // namespace Vel
