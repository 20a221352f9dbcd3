// Texts from outside, of every registered type: what names a collection is refused, and nothing
// else is.
#include <Brixo/BrixoTypesModule.h>
#include <Vel/Any.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/RangeException.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vel {
namespace {

using Flags = VelAttr::AttrFlags;

std::string text(const Any& any) { return any.text().charPtr(); }

// What a text is read as, or what is thrown behind "! ".
std::string parsed(Name type, const std::string& written) {
    try {
        return text(Any::parse(type, String8(std::string_view(written))));
    } catch (const RangeException& refused) {
        return std::string("! ") + refused.what();
    }
}

// The way to the collection that a text of the type names first: "'mask', " for each value on it,
// then type and attribute. Empty if a text of the type names none. Attributes that are no fields
// have no place in a text.
std::string refusal(const VelType& type) {
    if (!type.isValue()) return "";
    for (const VelAttr* const attr : type.attrs()) {
        if (!attr->flags().has(Flags::stored)) continue;
        if (attr->flags().has(Flags::collection))
            return std::string(type.name()) +
                   " cannot be read from a text that names its collection " +
                   std::string(attr->name());
        const std::string within = attr->type() != nullptr ? refusal(*attr->type()) : "";
        if (within.empty()) continue;
        return "in attribute '" + std::string(attr->name()) + "'" +
               (within.rfind("in attribute '", 0) == 0 ? ", " : ": ") + within;
    }
    return "";
}

TEST(Texts, EachTypeReadsWhatItPrintsOrRefusesItsCollection) {
    velInitBrixoTypes();
    std::size_t refused = 0;
    for (const VelType* const type : IntrospectionReactor::global()->types()) {
        if (!type->isValue() && !type->isEnumType()) continue;
        const std::string printed = text(Any(type->newGenericIf()));
        const std::string expected = refusal(*type);
        EXPECT_EQ(parsed(type->qualifiedName(), printed),
                  expected.empty() ? printed : "! " + expected);
        if (!expected.empty()) ++refused;
    }
    EXPECT_EQ(refused, 2u) << "a mask, and what has one";
}

constexpr Name mask = "Brixo::RequesterDataMask";
constexpr Name remoteId = "Brixo::LogicalRemoteResourceId";
const std::string refusedMask =
    "! RequesterDataMask cannot be read from a text that names its collection mask";

TEST(Texts, SpacingAndOrderMakeNoDifference) {
    for (const char* const written :
         {"Value('Brixo::RequesterDataMask', ** {'mask': None, 'valid': True})",
          "Value('Brixo::RequesterDataMask', ** {'mask': {}})",
          "Value('Brixo::RequesterDataMask', ** {'mask':",
          "\n Value\t(  'Brixo::RequesterDataMask'\r,\n** \n{ \t'valid' \n: False\n "
          ",\n\"mask\"\t:\tNone } ) ",
          "Value('Brixo::RequesterDataMask', ** {'m\\x61sk': None})",
          "Value('Brixo::RequesterDataMask', ** {'valid': True, 'valid': False, 'mask': None}) and "
          "junk"})
        EXPECT_EQ(parsed(mask, written), refusedMask) << written;
}

TEST(Texts, WhatMerelyLooksLikeACollectionIsReadAsEver) {
    const std::string whole = "Value('Brixo::RequesterDataMask', ** {'valid': True, 'mask': None})";
    EXPECT_EQ(parsed(mask, "Value('Brixo::RequesterDataMask', ** {'valid': True})"), whole);
    EXPECT_EQ(parsed(mask, "Value('Brixo::RequesterDataMask', ** {'masks': None})"),
              "! RequesterDataMask has no such attribute: masks");
    EXPECT_EQ(parsed(mask, "Value('Brixo::RequesterDataMask', ** {'Mask': None})"),
              "! RequesterDataMask has no such attribute: Mask");
    EXPECT_EQ(parsed(mask, "Value('Brixo::RequesterDataMask', ** {'setBitRange': None})"),
              "! RequesterDataMask has no such attribute: setBitRange");
    EXPECT_EQ(parsed(mask, "Value('Brixo::RequesterDataMask', ** {'valid': 'mask': None})"),
              "! in attribute 'valid': cannot convert \"'mask': None})\" at column 47 to bool");
    EXPECT_EQ(
        parsed(mask, "Value('Brixo::RequesterDataMask', ** {}), 'mask': None"),
        "! junk at column 40 deserializing Value('Brixo::RequesterDataMask', ** {}), 'mask': None");
    EXPECT_EQ(parsed(mask, "'mask': None"),
              "! expected \"Value\" at column 0, found \"'mask': None\"");
    EXPECT_EQ(parsed(mask, "Value('Brixo::RequesterDataMask', ** {'mask'"),
              "! expected \":\" at column 44, found end of text");
    EXPECT_EQ(parsed(mask, "Value('mask', ** {'mask': None})"),
              "! expected \"'Brixo::RequesterDataMas\"... at column 6, "
              "found \"'mask', ** {'mask': None\"...");
    EXPECT_EQ(parsed("Brixo::Command", "'mask'"), "! Command");
}

TEST(Texts, AValueMayHaveANameLikeACollectionOfItsOwnField) {
    // Its `mask` is a value; the collection is that value's.
    const std::string id =
        "Value('Brixo::LogicalResourceId', ** {'type': 'tableResource', 'id': 7})";
    const std::string none = "Value('Brixo::RequesterDataMask', ** {'valid': False, 'mask': None})";
    const std::string whole =
        "Value('Brixo::LogicalRemoteResourceId', ** {'id': " + id + ", 'mask': " + none + "})";
    EXPECT_EQ(parsed(remoteId, "Value('Brixo::LogicalRemoteResourceId', ** {'id': " + id + "})"),
              whole);
    EXPECT_EQ(parsed(remoteId, "Value('Brixo::LogicalRemoteResourceId', ** {'mask': "
                               "Value('Brixo::RequesterDataMask', ** {'valid': False}), 'id': " +
                                   id + "})"),
              whole);
    EXPECT_EQ(parsed(remoteId, whole), "! in attribute 'mask': " + refusedMask.substr(2));
    EXPECT_EQ(parsed(remoteId, "Value('Brixo::LogicalRemoteResourceId', ** {'mask': None})"),
              "! in attribute 'mask': expected \"Value\" at column 52, found \"None})\"");
}

TEST(Texts, AnOperandIsReadLikeThat) {
    const std::string printed = text(Any::make(mask, {{"valid", true}}));
    const auto thrown = [](auto call) {
        try {
            call();
            return std::string("nothing");
        } catch (const RangeException& refused) {
            return std::string("! ") + refused.what();
        }
    };
    Any map = Any::make("Brixo::ResourceIdToDataMaskMap");
    const char* const key = "Value('Brixo::PhysicalResourceId', ** {'id': 1})";
    EXPECT_EQ(thrown([&] { map.set("dataMask", key, printed.c_str()); }), refusedMask);
    EXPECT_EQ(thrown([&] { map.insert("dataMask", {key, printed.c_str()}); }), refusedMask);
    Any ids = Any::make("Brixo::LogicalRemoteResourceIdCol");
    EXPECT_EQ(thrown([&] {
                  (void)ids.call("tableIdWithMaskIs",
                                 {"Value('Brixo::LogicalTableId', ** {'id': 1})", printed.c_str()});
              }),
              refusedMask);
    EXPECT_EQ(thrown([&] {
                  (void)Any::make(remoteId, {{"id", key}, {"mask", printed.c_str()}});
              }).substr(0, 10),
              "! expected");
    EXPECT_EQ(map.count("dataMask") + ids.count("resourceId"), 0u);
    map.set("dataMask", key, Any::make(mask, {{"valid", true}}));
    EXPECT_EQ(text(map.get("dataMask", key)), printed);
}

TEST(TextsDeathTest, TheTypesOwnParserKeepsItsAssertion) {
    VelType& type = Any::type(mask);
    const String8 printed = type.newGenericIf()->strRep();
    EXPECT_DEATH((void)type.genericIf(printed, false), "This should not be used and doesn't work");
}

} // namespace
} // namespace Vel
