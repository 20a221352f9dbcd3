// Attribute.h - one attribute as a schema holds it: what it is, and how its value is reached.
//
// Test: Value_test.cpp and GenericIf_test.cpp.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Integers.h>
#include <array>
#include <cstddef>
#include <string_view>

namespace Vel {

enum class AttributeKind : U8 {
    stored,     // a field of the object
    computed,   // a value that a member function or a function of the object gives
    constant,   // a value that a static function gives
    function,   // takes arguments, or acts
    collection, // a KeyedCollection that the object holds
    keyed,      // values by key that the object computes: KeyedAccess
};

// How a text form looks: the bare value of the one field, or Value('Name', ** {...}). A counted
//                        object has none.
enum class Form : U8 { scalar, structured, none };

enum class Hash : U8 {
    none,       // no rule: the type has no hash(), or its own
    plainValue, // the one field, zero-extended
    xorFold,    // the one 64-bit field, low word XOR high word
    byteMix,    // one-at-a-time mix over the bytes of all fields, least significant first
};

// What the framework shows of an attribute.
struct Introspection {
    static constexpr U8 plain = 0;
    static constexpr U8 stored = 2;
    static constexpr U8 procedural = 8;
};

template <AttributeKind Kind, class Access, std::size_t argumentCount = 0,
          class Writer = std::nullptr_t>
struct Attribute {
    static constexpr AttributeKind kind = Kind;

    AttributeId id;
    std::string_view name;
    Access access; // pointer to member, function, or KeyedAccess
    U8 introspection;
    std::array<std::string_view, argumentCount> arguments;
    // A member function, or MemberWriters; null for what the field's own operations write.
    Writer writer{};
};

// How the values of a keyed attribute are reached: member functions of the object.
template <class Reader, class Writer, class Deleter, class Counter, class Next>
struct KeyedAccess {
    Reader reader;   // Value (Key) const
    Writer writer;   // void (Key, Value)
    Deleter deleter; // Value (Key): what was there
    Counter counter; // U32 () const
    Next next;       // Key (Key) const: the key behind one, from and to Key::null()
};

// How a collection is written when more has to happen than the collection does by itself.
template <class Inserter, class Deleter, class Emptier>
struct MemberWriters {
    Inserter inserter; // (Key)
    Deleter deleter;   // Value (Key): what was there
    Emptier emptier;   // ()
};

// Whether an attribute is part of the value: compared, hashed, printed and logged.
template <class A>
inline constexpr bool isField =
    A::kind == AttributeKind::stored || A::kind == AttributeKind::collection;

// Reads the attribute "hash".
struct CallHash {
    template <class T>
    constexpr U32 operator()(const T& value) const {
        return value.hash();
    }
};

} // namespace Vel
