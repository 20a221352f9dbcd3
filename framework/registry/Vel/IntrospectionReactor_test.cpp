#include <Vel/IntrospectionReactor.h>

#include <Vel/Builtin.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

Ptr<VelType> newType(Name name) { return new VelType(name, nullptr, nullptr, VelTypeFlags()); }

TEST(IntrospectionReactor, IsActiveByDefault) {
    EXPECT_TRUE(IntrospectionReactor::global()->active());
    EXPECT_EQ(IntrospectionReactor::global(), IntrospectionReactor::global());
}

TEST(IntrospectionReactor, TheEnvironmentMaySwitchItOff) {
    setenv("VEL_INTROSPECTION", "off", 1);
    EXPECT_FALSE(Ptr<IntrospectionReactor>(new IntrospectionReactor)->active());
    setenv("VEL_INTROSPECTION", "on", 1);
    EXPECT_TRUE(Ptr<IntrospectionReactor>(new IntrospectionReactor)->active());
    unsetenv("VEL_INTROSPECTION");
    EXPECT_TRUE(Ptr<IntrospectionReactor>(new IntrospectionReactor)->active());
}

TEST(IntrospectionReactor, KeepsScopesAndTypes) {
    const Ptr<IntrospectionReactor> reactor = new IntrospectionReactor;
    const Ptr<VelType> type = newType("Card");
    type->referencesLeak();
    VelType::typeNodeIs(type.ptr(), "Bus::Card");
    reactor->handleNameSpace("Bus");
    reactor->handleType(type, nullptr);
    EXPECT_EQ(reactor->openScope(), "Bus::Card");
    reactor->handleScopeExit();
    reactor->handleType(type, nullptr);
    reactor->handleScopeExit();
    EXPECT_EQ(reactor->openScope(), "Bus");
    reactor->handleScopeExit();
    EXPECT_EQ(reactor->openScope(), "");
    ASSERT_EQ(reactor->types().size(), 1u) << "told twice, kept once";
    EXPECT_EQ(reactor->types()[0], type.ptr());
}

TEST(IntrospectionReactor, AddsAnAttributeToTheTypeThatDeclaresIt) {
    const Ptr<IntrospectionReactor> reactor = new IntrospectionReactor;
    const Ptr<VelType> type = newType("Bridge");
    VelAttr* const attr = reactor->defNoninstantiatingAttr(
        type, "slot", Builtin<U16>::_fwkType(), type, VelAttr::AttrFlags::computed, 8, 131);
    EXPECT_EQ(type->attr("slot"), attr);
    EXPECT_EQ(attr->introspection(), 8u);
    EXPECT_EQ(attr->id(), 131u);
    EXPECT_EQ(attr->scope(), type.ptr());
    EXPECT_EQ(attr->type()->name(), "U16");
}

TEST(IntrospectionReactorDeathTest, ATypeOutsideOfItsScopeIsRefused) {
    const Ptr<IntrospectionReactor> reactor = new IntrospectionReactor;
    const Ptr<VelType> type = newType("Card");
    reactor->handleNameSpace("Elsewhere");
    EXPECT_DEATH(reactor->handleType(type, nullptr),
                 "IntrospectionReactor.cpp:[0-9]+: assertion failed: "
                 "openScope\\(\\) == type->qualifiedName\\(\\) ");
}

TEST(IntrospectionReactorDeathTest, ScopesAndContextsArePaired) {
    const Ptr<IntrospectionReactor> reactor = new IntrospectionReactor;
    EXPECT_DEATH(reactor->handleScopeExit(),
                 "IntrospectionReactor.cpp:[0-9]+: assertion failed: !scopes_.empty\\(\\) ");
    EXPECT_DEATH(reactor->handleAttrContextExit(),
                 "IntrospectionReactor.cpp:[0-9]+: assertion failed: attrContext_ ");
    EXPECT_DEATH(IntrospectionReactor::globalIs(nullptr),
                 "IntrospectionReactor.cpp:[0-9]+: assertion failed: reactor != nullptr ");
}

} // namespace
} // namespace Vel
