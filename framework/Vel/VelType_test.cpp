#include <Vel/VelType.h>

#include <Vel/Builtin.h>
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

TEST(VelType, FindsAttributesByNameAndById) {
    const Ptr<VelType> type = new VelType("Circle", nullptr);
    type->attrIs(new VelAttr("radius", 2, Builtin<unsigned>::_fwkType()));
    type->attrIs(new VelAttr("draw", 3, nullptr));
    ASSERT_NE(type->attr("radius"), nullptr);
    EXPECT_EQ(type->attr("radius")->id(), 2u);
    EXPECT_STREQ(type->attr("radius")->type()->name(), "U32");
    EXPECT_EQ(type->attr("draw")->type(), nullptr);
    EXPECT_EQ(type->attr(3), type->attr("draw"));
    EXPECT_EQ(type->attr("radiu"), nullptr);
    EXPECT_EQ(type->attr(4), nullptr);
}

TEST(VelType, FindsAttributesOfItsBasesBehindItsOwn) {
    const Ptr<VelType> base = new VelType("Shape", nullptr);
    const Ptr<VelType> type = new VelType("Circle", base.ptr());
    base->attrIs(new VelAttr("area", 2, nullptr));
    base->attrIs(new VelAttr("colour", 3, nullptr));
    type->attrIs(new VelAttr("area", 130, nullptr));
    EXPECT_EQ(type->attr("area")->id(), 130u);
    EXPECT_EQ(type->attr("colour")->id(), 3u);
    EXPECT_EQ(base->attr("area")->id(), 2u);
}

TEST(VelType, AnAttributeReplacesTheOneOfItsName) {
    const Ptr<VelType> type = new VelType("Circle", nullptr);
    type->attrIs(new VelAttr("draw", 4, nullptr));
    type->attrIs(new VelAttr("draw", 5, nullptr));
    EXPECT_EQ(type->attr("draw")->id(), 5u);
    EXPECT_EQ(type->attr(4), nullptr);
}

} // namespace
} // namespace Vel
