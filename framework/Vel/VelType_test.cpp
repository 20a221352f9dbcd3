#include <Vel/VelType.h>

#include <Vel/Ptr.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(VelType, KnowsItsNameAndItsBase) {
    const Ptr<VelType> base = new VelType("Shape", nullptr);
    const Ptr<VelType> type = new VelType("Circle", base.ptr());
    EXPECT_STREQ(type->name(), "Circle");
    EXPECT_EQ(type->base(), base.ptr());
    EXPECT_EQ(base->base(), nullptr);
}

} // namespace
} // namespace Vel
