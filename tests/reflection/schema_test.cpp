// The registry holds exactly what the table says, both ways.
#include "SchemaTable.h"

#include <Brixo/BrixoTypesModule.h>
#include <Brixo/CacheTableModule.h>
#include <Orn/BitmaskModule.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/VelType.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Brixo::testing {
namespace {

using Vel::VelAttr;
using Vel::VelType;

std::string_view nameOf(const VelType* type) {
    return type != nullptr ? type->qualifiedName() : std::string_view();
}

std::string lines(const Vel::Arguments& arguments) {
    std::string text;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        text += " " + std::string(arguments.name(i)) + ":" + std::string(arguments.typeName(i));
    return text;
}

std::string lines(const std::vector<ArgumentRow>& arguments) {
    std::string text;
    for (const ArgumentRow& argument : arguments)
        text += " " + std::string(argument.name) + ":" + std::string(argument.type);
    return text;
}

// One line for a type and one for each attribute, from the registry and from the table.
std::string lines(const VelType& type) {
    std::string text = std::string(type.qualifiedName()) + " < " +
                       std::string(nameOf(type.base())) +
                       (type.isValue()      ? " value"
                        : type.isEnumType() ? " enumeration"
                                            : " entity") +
                       lines(type.constructorArguments()) + "\n";
    for (const VelAttr* attr : type.attrs())
        text += "  " + std::string(attr->name()) + " " + std::to_string(attr->id()) + " " +
                std::string(nameOf(attr->type())) + " " + std::to_string(attr->introspection()) +
                " (" + lines(attr->arguments()) + " ) [" + std::string(nameOf(attr->keyType())) +
                "] " + std::string(attr->keyAttr() != nullptr ? attr->keyAttr()->name() : "") +
                "\n";
    return text;
}

std::string lines(const TypeRow& type) {
    static const std::string kinds[] = {" value", " enumeration", " entity"};
    std::string text = std::string(type.name) + " < " + std::string(type.base) + kinds[type.kind] +
                       lines(type.constructor) + "\n";
    for (const AttributeRow& attr : type.attributes)
        text += "  " + std::string(attr.name) + " " + std::to_string(attr.id) + " " +
                std::string(attr.type) + " " + std::to_string(attr.introspection) + " (" +
                lines(attr.arguments) + " ) [" + std::string(attr.keyType) + "] " +
                std::string(attr.keyAttribute) + "\n";
    return text;
}

TEST(Schema, EachTypeIsRegisteredAsTheTableSays) {
    for (const TypeRow& row : schemaTable()) {
        const VelType* const type = VelType::typeNode(row.name);
        ASSERT_NE(type, nullptr) << row.name;
        EXPECT_EQ(lines(*type), lines(row));
        EXPECT_TRUE(type->hasGenericIfSupport()) << row.name;
        EXPECT_GT(type->size(), 0u) << row.name;
    }
}

TEST(Schema, NothingElseIsRegisteredAndEachInItsOrder) {
    std::vector<std::string_view> registered;
    for (const VelType* type : Vel::IntrospectionReactor::global()->types())
        registered.push_back(type->qualifiedName());
    std::vector<std::string_view> expected;
    for (const TypeRow& row : schemaTable()) expected.push_back(row.name);
    EXPECT_EQ(registered, expected);
}

TEST(Schema, RegisteringAgainChangesNothing) {
    std::string before;
    for (const VelType* type : Vel::IntrospectionReactor::global()->types()) before += lines(*type);
    velInitBrixoTypes();
    velInitU64Bitmask();
    velInitBrixoCacheTable();
    std::string after;
    for (const VelType* type : Vel::IntrospectionReactor::global()->types()) after += lines(*type);
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
} // namespace Brixo::testing
