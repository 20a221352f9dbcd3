#include <Vel/RangeException.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(RangeException, IsAlwaysOfTheKindRange) {
    const RangeException error("x", Exception::Id::type);
    EXPECT_TRUE(error.ids().has(Exception::Id::range));
    EXPECT_TRUE(error.ids().has(Exception::Id::type));
    EXPECT_TRUE(RangeException("y").ids().has(Exception::Id::range));
}

TEST(RangeException, IsThrownWithItsText) {
    try {
        throwRangeException("port 70000");
    } catch (const RangeException& error) {
        EXPECT_STREQ(error.what(), "port 70000");
    }
    EXPECT_THROW(throwRangeException(String8("x")), RangeException);
}

} // namespace
} // namespace Vel
