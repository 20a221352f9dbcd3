#include <Vel/VelAttr.h>

#include <Vel/Builtin.h>
#include <Vel/Ptr.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

using Flags = VelAttr::AttrFlags;

TEST(VelAttr, KnowsWhatItWasMadeWith) {
    const Ptr<VelAttr> key =
        new VelAttr("id", Builtin<unsigned char>::_fwkType(), nullptr, nullptr, Flags::stored, 2);
    const Ptr<VelAttr> attr =
        new VelAttr("ports", Builtin<int>::_fwkType(), key.ptr(), nullptr, Flags::collection, 130);
    EXPECT_EQ(attr->name(), "ports");
    EXPECT_EQ(attr->id(), 130u);
    EXPECT_EQ(attr->type(), Builtin<int>::_fwkType());
    EXPECT_EQ(attr->keyAttr(), key.ptr());
    EXPECT_EQ(attr->valueAttr(), nullptr);
    EXPECT_EQ(attr->flags(), Flags(Flags::collection));
    EXPECT_EQ(attr->introspection(), 0u);
    EXPECT_EQ(attr->keyType(), nullptr);
    EXPECT_EQ(attr->scope(), nullptr);
}

TEST(VelAttr, AProcedureHasNoValueAndSoNoType) {
    const Ptr<VelAttr> attr =
        new VelAttr("doRestart", nullptr, nullptr, nullptr, Flags::function, 144);
    EXPECT_EQ(attr->type(), nullptr);
    EXPECT_TRUE(attr->arguments().empty());
}

TEST(VelAttr, KeepsArgumentsInOrder) {
    const Ptr<VelAttr> attr = new VelAttr("draw", nullptr, nullptr, nullptr, Flags::function, 3);
    attr->argNameQEnq("x");
    attr->argNameQEnq("y");
    attr->argTypeQEnq("U16");
    attr->argTypeQEnq("U32");
    ASSERT_EQ(attr->arguments().size(), 2u);
    EXPECT_EQ(attr->arguments().name(0), "x");
    EXPECT_EQ(attr->arguments().typeName(0), "U16");
    EXPECT_EQ(attr->arguments().name(1), "y");
    EXPECT_EQ(attr->arguments().typeName(1), "U32");
}

TEST(VelAttr, FlagsJoin) {
    constexpr Flags both = Flags(Flags::stored) | Flags::writable;
    static_assert(both.has(Flags::stored) && both.has(Flags::writable));
    static_assert(!both.has(Flags::computed) && !Flags().has(Flags::stored));
    EXPECT_EQ(both, Flags(Flags::writable) | Flags::stored);
    EXPECT_FALSE(both == Flags(Flags::stored));
}

} // namespace
} // namespace Vel
