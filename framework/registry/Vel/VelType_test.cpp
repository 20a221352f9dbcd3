#include <Vel/VelType.h>

#include <Vel/Builtin.h>
#include <Vel/GenericIf.h>
#include <Vel/Ptr.h>
#include <Vel/ReflectionException.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vel {
namespace {

Ptr<VelType> newType(Name name, VelType* base = nullptr) {
    return new VelType(name, base, nullptr, VelTypeFlags());
}

VelAttr* add(const Ptr<VelType>& type, Name name, AttributeId id,
             VelAttr::AttrFlags flags = VelAttr::AttrFlags::stored) {
    return type->attrIs(name, nullptr, nullptr, nullptr, flags, id);
}

std::vector<Name> names(const VelType& type) {
    std::vector<Name> result;
    for (const VelAttr* attr : type.attrs()) result.push_back(attr->name());
    return result;
}

TEST(VelType, KnowsItsNamesItsBaseAndItsScope) {
    const Ptr<VelType> base = newType("Shape");
    const Ptr<VelType> type = new VelType("Circle", base.ptr(), base.ptr(), VelTypeFlags());
    EXPECT_EQ(type->name(), "Circle");
    EXPECT_EQ(type->qualifiedName(), "Circle");
    EXPECT_EQ(type->base(), base.ptr());
    EXPECT_EQ(type->scope(), base.ptr());
    EXPECT_EQ(base->base(), nullptr);
    EXPECT_EQ(base->scope(), nullptr);
}

TEST(VelType, IsAKindOfItselfAndOfItsBases) {
    const Ptr<VelType> shape = newType("Shape");
    const Ptr<VelType> round = newType("Round", shape.ptr());
    const Ptr<VelType> circle = newType("Circle", round.ptr());
    EXPECT_TRUE(circle->isKindOf(circle.ptr()));
    EXPECT_TRUE(circle->isKindOf(shape.ptr()));
    EXPECT_FALSE(shape->isKindOf(circle.ptr()));
    EXPECT_FALSE(circle->isKindOf(nullptr));
}

TEST(VelType, StoresWhatRegistrationSays) {
    const Ptr<VelType> type = newType("Circle");
    EXPECT_EQ(type->flags(), VelTypeFlags());
    EXPECT_EQ(type->size(), 0u);
    type->isValueIs(true);
    type->isEnumTypeIs(true);
    type->hasGenericIfSupportIs(true);
    type->sizeIs(12);
    EXPECT_TRUE(type->isValue());
    EXPECT_TRUE(type->isEnumType());
    EXPECT_TRUE(type->hasGenericIfSupport());
    EXPECT_EQ(type->flags(), (VelTypeFlags{true, true, true}));
    EXPECT_EQ(type->size(), 12u);
    type->isValueIs(false);
    EXPECT_EQ(type->flags(), (VelTypeFlags{false, true, true}));
}

TEST(VelType, KeepsTheConstructorsArgumentsInOrder) {
    const Ptr<VelType> type = newType("Circle");
    EXPECT_TRUE(type->constructorArguments().empty());
    type->constructorArgNameQEnq("x");
    type->constructorArgTypeQEnq("U32");
    type->constructorArgNameQEnq("filled");
    type->constructorArgTypeQEnq("bool");
    ASSERT_EQ(type->constructorArguments().size(), 2u);
    EXPECT_EQ(type->constructorArguments().name(0), "x");
    EXPECT_EQ(type->constructorArguments().typeName(0), "U32");
    EXPECT_EQ(type->constructorArguments().name(1), "filled");
    EXPECT_EQ(type->constructorArguments().typeName(1), "bool");
    type->constructorArgDelAll();
    EXPECT_EQ(type->constructorArguments().size(), 0u);
}

TEST(VelTypeDeathTest, AnArgumentBehindTheLastIsRefused) {
    const Ptr<VelType> type = newType("Circle");
    EXPECT_DEATH((void)type->constructorArguments().name(0),
                 "Arguments.h:[0-9]+: assertion failed: index < names_.size\\(\\) ");
}

TEST(VelType, FindsAttributesByNameAndById) {
    const Ptr<VelType> type = newType("Circle");
    EXPECT_EQ(type->attr("radius"), nullptr);
    EXPECT_EQ(type->attr(0), nullptr);
    VelAttr* const radius = type->attrIs("radius", Builtin<unsigned>::_fwkType(), nullptr, nullptr,
                                         VelAttr::AttrFlags::stored, 2);
    VelAttr* const draw = add(type, "draw", 3, VelAttr::AttrFlags::function);
    EXPECT_EQ(type->attr("radius"), radius);
    EXPECT_EQ(radius->id(), 2u);
    EXPECT_EQ(radius->type()->name(), "U32");
    EXPECT_EQ(radius->scope(), type.ptr());
    EXPECT_EQ(draw->type(), nullptr);
    EXPECT_EQ(type->attr(3), draw);
    EXPECT_EQ(type->attr("radiu"), nullptr);
    EXPECT_EQ(type->attr("radiuss"), nullptr);
    EXPECT_EQ(type->attr(""), nullptr);
    EXPECT_EQ(type->attr(4), nullptr);
    EXPECT_EQ(type->attr(1), nullptr);
}

TEST(VelType, FindsEveryOneOfManyAttributes) {
    const Ptr<VelType> type = newType("Wide");
    std::vector<std::string> all;
    for (unsigned i = 0; i < 200; ++i) all.push_back("attribute" + std::to_string(i * 37));
    for (unsigned i = 0; i < 200; ++i) add(type, all[i], i + 2);
    for (unsigned i = 0; i < 200; ++i) {
        ASSERT_NE(type->attr(all[i]), nullptr) << all[i];
        EXPECT_EQ(type->attr(all[i])->id(), i + 2);
        EXPECT_EQ(type->attr(i + 2), type->attr(all[i]));
    }
}

TEST(VelType, FindsAttributesOfItsBasesBehindItsOwn) {
    const Ptr<VelType> base = newType("Shape");
    const Ptr<VelType> type = newType("Circle", base.ptr());
    add(type, "area", 130);
    EXPECT_EQ(type->attr("colour"), nullptr) << "the base is not registered yet";
    add(base, "area", 2);
    add(base, "colour", 3);
    EXPECT_EQ(type->attr("area")->id(), 130u);
    EXPECT_EQ(type->attr("colour")->id(), 3u);
    EXPECT_EQ(type->attr(3)->name(), "colour");
    EXPECT_EQ(base->attr("area")->id(), 2u);
    EXPECT_EQ(names(*type), std::vector<Name>{"area"});
}

TEST(VelType, AttributesStandByIdWithTheKeyLast) {
    const Ptr<VelType> type = newType("Circle");
    add(type, "fwkKey", 0, VelAttr::AttrFlags::key);
    add(type, "draw", 132);
    add(type, "radius", 130);
    add(type, "area", 131);
    EXPECT_EQ(names(*type), (std::vector<Name>{"radius", "area", "draw", "fwkKey"}));
    EXPECT_EQ(type->attr(0)->name(), "fwkKey");
}

TEST(VelType, AnAttributeReplacesTheOneOfItsName) {
    const Ptr<VelType> type = newType("Circle");
    VelAttr* const old = add(type, "draw", 4);
    add(type, "area", 6);
    VelAttr* const now = add(type, "draw", 5);
    EXPECT_EQ(type->attr("draw"), now);
    EXPECT_EQ(type->attr(4), nullptr);
    EXPECT_EQ(names(*type), (std::vector<Name>{"draw", "area"}));
    EXPECT_EQ(old->name(), "draw") << "who looked it up may still read it";
}

TEST(VelType, DeletesAnAttributeOfItsOwn) {
    const Ptr<VelType> base = newType("Shape");
    const Ptr<VelType> type = newType("Circle", base.ptr());
    add(base, "area", 2);
    add(type, "draw", 3);
    EXPECT_FALSE(type->attrDel("area"));
    EXPECT_TRUE(type->attrDel("draw"));
    EXPECT_FALSE(type->attrDel("draw"));
    EXPECT_EQ(type->attr("draw"), nullptr);
    EXPECT_EQ(type->attr(3), nullptr);
    EXPECT_NE(type->attr("area"), nullptr);
}

TEST(VelType, IsFoundByTheNameItIsBoundTo) {
    const Ptr<VelType> type = newType("Ellipse");
    type->referencesLeak();
    EXPECT_EQ(VelType::typeNode("Test::Ellipse"), nullptr);
    VelType::typeNodeIs(type.ptr(), "Test::Ellipse");
    VelType::typeNodeIs(type.ptr(), "Test::Ellipse");
    EXPECT_EQ(VelType::typeNode("Test::Ellipse"), type.ptr());
    EXPECT_EQ(type->qualifiedName(), "Test::Ellipse");
    EXPECT_EQ(VelType::typeNode("Ellipse"), nullptr);
    EXPECT_EQ(VelType::typeNode("U16"), Builtin<unsigned short>::_fwkType());
    EXPECT_EQ(VelType::typeNode("Vel::PtrInterface"), PtrInterface::_fwkType());
}

TEST(VelTypeDeathTest, AnotherTypeUnderABoundNameIsRefused) {
    ASSERT_NE(Builtin<U16>::_fwkType(), nullptr);
    EXPECT_DEATH(VelType::typeNodeIs(newType("U16").ptr(), "U16"),
                 "VelType.cpp:[0-9]+: assertion failed: no two types have one name; name = U16 ");
}

TEST(VelType, ATypeWithoutAdaptersRefusesToBeWrapped) {
    const Ptr<VelType> type = newType("Circle");
    const char* const refusal = "argument Circle is missing or of another type";
    const auto textOf = [](auto wrap) {
        try {
            wrap();
        } catch (const ReflectionException& refused) {
            EXPECT_TRUE(refused.ids().has(Exception::Id::type));
            return std::string(refused.what());
        }
        return std::string("nothing was thrown");
    };
    EXPECT_EQ(textOf([&] { (void)type->genericIf(&type, false); }), refusal);
    EXPECT_EQ(textOf([&] { (void)type->genericIf(String8("1"), false); }), refusal);
    EXPECT_EQ(textOf([&] { (void)type->genericIfListConstructor(nullptr); }), refusal);
    EXPECT_EQ(textOf([&] { (void)type->newGenericIf(); }), refusal);
    EXPECT_FALSE(type->genericIf(static_cast<const GenericIf*>(nullptr), false));
}

} // namespace
} // namespace Vel
