// ResourceIdConformance.h - what holds for both families of resource ids. Not installed.
#pragma once

#include <Brixo/ResourceType.h>
#include <Vel/testing/ValueTesting.h>
#include <gtest/gtest.h>
#include <string>
#include <unordered_set>
#include <vector>

namespace Brixo::Testing {

// The one-at-a-time mix over 4 bytes of type and 8 bytes of id, written out.
inline Vel::U32 mixOfResource(Vel::U32 type, Vel::U64 id) {
    Vel::U32 h = 0;
    for (unsigned i = 0; i < 12; ++i) {
        h += static_cast<Vel::U8>(i < 4 ? type >> (8 * i) : id >> (8 * (i - 4)));
        h += h << 10;
        h ^= h >> 6;
    }
    h += h << 3;
    h ^= h >> 11;
    h += h << 15;
    return h;
}

inline const std::vector<Vel::U64> numbers = {0, 1, 7, 0xffffffff, 0x100000000, ~Vel::U64{0}};
inline const std::vector<std::string> typeNames = {"invalidResource", "tableResource",
                                                   "registerResource"};

template <class Id>
void expectResourceId(const std::string& name) {
    using namespace Vel::Testing;
    EXPECT_EQ(Id(), Id(ResourceType::invalidResource, 0));
    EXPECT_EQ(Id().hash(), 0u);
    std::unordered_set<Id> distinct;
    for (unsigned t = 0; t < 3; ++t) {
        for (const Vel::U64 number : numbers) {
            const Id id(static_cast<ResourceType>(t), number);
            EXPECT_EQ(id.type(), static_cast<ResourceType>(t));
            EXPECT_EQ(id.id(), number);
            EXPECT_EQ(id.hash(), mixOfResource(t, number));
            EXPECT_TRUE(distinct.insert(id).second);
            const std::string printed = "Value('Brixo::" + name + "', ** {'type': '" +
                                        typeNames[t] + "', 'id': " + std::to_string(number) + "})";
            EXPECT_EQ(text(id), printed);
            EXPECT_EQ(parsed<Id>(printed), id);
            for (unsigned u = 0; u < 3; ++u)
                for (const Vel::U64 other : numbers)
                    EXPECT_TRUE(comparesAs(id, Id(static_cast<ResourceType>(u), other),
                                           t < u || (t == u && number < other),
                                           t == u && number == other));
        }
    }
    const std::vector<Vel::U8> bytes = {0, 0, 0, 2, 1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(logged(Id(ResourceType::registerResource, 0x0102030405060708)), bytes);
    EXPECT_EQ(fromLog<Id>(bytes), Id(ResourceType::registerResource, 0x0102030405060708));
}

// The texts that a type's parser takes and refuses; every error names the type itself.
template <class Id>
void expectResourceIdGrammar(const std::string& name) {
    using namespace Vel::Testing;
    const std::string open = "Value('Brixo::" + name + "', ** {";
    EXPECT_EQ(text(parsed<Id>(open + "})")), open + "'type': 'invalidResource', 'id': 0})");
    EXPECT_EQ(text(parsed<Id>(open + "'id': 5, 'type': 'registerResource'})")),
              open + "'type': 'registerResource', 'id': 5})");
    EXPECT_EQ(text(parsed<Id>(open + "'id': 5, 'id': 6})")),
              open + "'type': 'invalidResource', 'id': 6})");
    EXPECT_EQ(text(parsed<Id>("  Value ( 'Brixo::" + name + "' , ** { \"id\" : 0x10 } ) ")),
              open + "'type': 'invalidResource', 'id': 16})");
    EXPECT_EQ(parseError<Id>(open + "'type': 'tableResource'"),
              "premature end of value type " + name);
    EXPECT_EQ(parseError<Id>(open), "premature end of value type " + name);
    EXPECT_EQ(parseError<Id>(open + "'ID': 5})"), name + " has no such attribute: ID");
    EXPECT_EQ(parseError<Id>(open + "'hash': 5})"), name + " has no such attribute: hash");
    EXPECT_EQ(parseError<Id>(open + "'type': 'TableResource'})"),
              "in attribute 'type': ResourceType");
    const std::string whole = open + "'id': 5})";
    EXPECT_EQ(parseError<Id>(whole + "xyz"),
              "junk at column " + std::to_string(whole.size()) + " deserializing " + whole + "xyz");
    EXPECT_NE(parseError<Id>(open + "'id': 5, })"), "");
    EXPECT_NE(parseError<Id>("Value('Brixo::OtherId', ** {})"), "");
    EXPECT_NE(parseError<Id>(open + "'id': -1})"), "");
}

// A refinement fixes the type when it is built, and not when it is read.
template <class Id, class Base>
void expectRefinement(const std::string& name, ResourceType type) {
    using namespace Vel::Testing;
    EXPECT_EQ(Id().type(), type);
    EXPECT_EQ(Id().id(), 0u);
    const Id id(5);
    EXPECT_TRUE(id == Base(type, 5));
    const Base& base = id;
    EXPECT_EQ(base.hash(), Base(type, 5).hash());
    EXPECT_EQ(logged(id), logged(base));
    EXPECT_EQ(fromLog<Id>(logged(base)), id);
    EXPECT_EQ(text(id), "Value('Brixo::" + name + "', ** {'type': '" +
                            typeNames[static_cast<unsigned>(type)] + "', 'id': 5})");
    EXPECT_EQ(parsed<Id>(text(id)), id);
    const Id read = parsed<Id>("Value('Brixo::" + name + "', ** {'id': 3})");
    EXPECT_EQ(read.type(), ResourceType::invalidResource);
    EXPECT_EQ(read.id(), 3u);
    EXPECT_NE(parseError<Base>(text(id)), "");
    expectResourceIdGrammar<Id>(name);
}

} // namespace Brixo::Testing
