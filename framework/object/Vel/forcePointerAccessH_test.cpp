#include <Vel/forcePointerAccessH.h>

#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(ForcePointerAccessH, TouchesNothing) {
    int value = 5;
    forcePointerAccessH(&value);
    EXPECT_EQ(value, 5);
    forcePointerAccessH(nullptr);
}

} // namespace
} // namespace Vel
