// The registry holds the types of the modules' lists, and what holds for all of them. What each is
// registered as stands in its own test.
#include <Brixo/BrixoTypesModule.h>
#include <Brixo/CacheTableModule.h>
#include <Brixo/testing/EveryType.h>
#include <Orn/BitmaskModule.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/VelType.h>
#include <Vel/testing/Registered.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace Brixo {
namespace {

using Vel::VelAttr;
using Vel::VelType;

TEST(Schema, EachTypeOfTheListsIsRegisteredInTheirOrderAndNothingElse) {
    std::vector<std::string> names;
    for (const VelType* type : Vel::IntrospectionReactor::global()->types()) {
        names.emplace_back(type->qualifiedName());
        EXPECT_TRUE(type->hasGenericIfSupport()) << type->qualifiedName();
        EXPECT_GT(type->size(), 0u) << type->qualifiedName();
    }
    EXPECT_EQ(names, Testing::namesOf<Testing::EveryType>());
}

// What a type is registered as is written out in the test beside it.
TEST(Schema, EachTypesOwnTestSaysHowItIsRegistered) {
    for (const std::string& name : Testing::namesOf<Testing::EveryType>()) {
        const std::string test = name.substr(name.rfind(':') + 1) + "_test.cpp";
        bool isSaid = false;
        for (const char* const folder : {"types/Brixo/", "bitmask/Orn/", "cachetable/Brixo/"}) {
            std::ifstream file(std::string(BRIXO_SOURCE_DIR "/") + folder + test);
            std::ostringstream text;
            text << file.rdbuf();
            isSaid |= text.str().find("registered(\"" + name + "\")") != std::string::npos;
        }
        EXPECT_TRUE(isSaid) << test << " does not say what " << name << " is registered as";
    }
}

TEST(Schema, RegisteringAgainChangesNothing) {
    std::string before;
    for (const VelType* type : Vel::IntrospectionReactor::global()->types())
        before += Vel::Testing::registered(*type);
    velInitBrixoTypes();
    velInitU64Bitmask();
    velInitBrixoCacheTable();
    std::string after;
    for (const VelType* type : Vel::IntrospectionReactor::global()->types())
        after += Vel::Testing::registered(*type);
    EXPECT_EQ(before, after);
}

TEST(Schema, OnlyAValueWithOneFieldCalledValueHasAValueAttribute) {
    for (const VelType* type : Vel::IntrospectionReactor::global()->types()) {
        const VelAttr* const attr = type->isEnumType() ? nullptr : type->attr("value");
        EXPECT_EQ(type->valueAttr(), attr) << type->qualifiedName();
    }
    EXPECT_NE(VelType::typeNode("Brixo::TargetId")->valueAttr(), nullptr) << "inherited";
    EXPECT_EQ(VelType::typeNode("Brixo::Command")->attr("value"), nullptr);
}

TEST(Schema, ARefinementShowsWhatItInherits) {
    const VelType* const target = VelType::typeNode("Brixo::TargetId");
    const VelType* const bit = VelType::typeNode("Orn::BitId");
    EXPECT_EQ(target->attr("null"), bit->attr("null"));
    EXPECT_EQ(target->attr(2U), bit->attr("value"));
    const VelType* const table = VelType::typeNode("Brixo::LogicalTableId");
    for (const char* name : {"type", "id", "hash"})
        EXPECT_EQ(table->attr(name), VelType::typeNode("Brixo::LogicalResourceId")->attr(name));
}

TEST(Schema, ATypeThatExtendsAnotherFindsItsAttributesWithoutBeingOfItsKind) {
    const VelType* const mask = VelType::typeNode("Brixo::TargetMask");
    const VelType* const bits = VelType::typeNode("Orn::U64Bitmask");
    EXPECT_EQ(mask->base(), nullptr);
    EXPECT_EQ(mask->attrs().size(), 4u);
    EXPECT_FALSE(mask->isKindOf(bits));
    for (const char* name : {"value", "bits", "bitId", "nextBitId"}) {
        ASSERT_NE(mask->attr(name), nullptr) << name;
        EXPECT_EQ(mask->attr(name), bits->attr(name));
        EXPECT_EQ(mask->attr(bits->attr(name)->id()), bits->attr(name));
    }
    EXPECT_EQ(mask->attr("targets")->id(), 131u);
    EXPECT_EQ(mask->attr("bit"), nullptr);
}

TEST(Schema, AnEnumeratorsIdIsItsNumber) {
    for (const VelType* type : Vel::IntrospectionReactor::global()->types()) {
        if (!type->isEnumType()) continue;
        unsigned number = 0;
        for (const VelAttr* attr : type->attrs()) EXPECT_EQ(attr->id(), number++);
        EXPECT_GE(number, 2u);
    }
}

} // namespace
} // namespace Brixo
