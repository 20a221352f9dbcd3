#include <Vel/VelAttr.h>

#include <Vel/Builtin.h>
#include <Vel/Ptr.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(VelAttr, KnowsItsNameItsIdAndTheTypeOfItsValue) {
    const Ptr<VelAttr> attr = new VelAttr("dalId", 130, Builtin<unsigned char>::_fwkType());
    EXPECT_STREQ(attr->name(), "dalId");
    EXPECT_EQ(attr->id(), 130u);
    EXPECT_EQ(attr->type(), Builtin<unsigned char>::_fwkType());
}

TEST(VelAttr, AProcedureHasNoValueAndSoNoType) {
    const Ptr<VelAttr> attr = new VelAttr("doRestart", 144, nullptr);
    EXPECT_EQ(attr->type(), nullptr);
}

} // namespace
} // namespace Vel
