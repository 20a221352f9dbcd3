// FieldTypes.h - which types an attribute may have.
//
// Test: tests/compile_fail.
#pragma once

#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/value/Enum.h>
#include <concepts>
#include <type_traits>

namespace Vel {

template <class T>
concept BuiltinType = std::is_same_v<T, bool> || std::is_same_v<T, int> || std::is_same_v<T, U8> ||
    std::is_same_v<T, U16> || std::is_same_v<T, U32> || std::is_same_v<T, U64> ||
    std::is_same_v<T, BytePtr> || std::is_same_v<T, void*>;

// A class that says what it consists of.
template <class T>
concept SchemaClass = requires {
    T::schema();
};

namespace detail {

template <class T>
struct Unqualified {
    using Type = T;
};

// Bytes are bytes, whether the one who takes them may write them or not.
template <>
struct Unqualified<const unsigned char*> {
    using Type = BytePtr;
};

template <class T>
inline constexpr bool isReference = false;
template <class T>
inline constexpr bool isReference<Ptr<T>> = true;

} // namespace detail

// The type as reflection sees it: without const, without reference.
template <class T>
using ReflectedType = typename detail::Unqualified<std::remove_cvref_t<T>>::Type;

// A field of a value is compared, printed, read and logged: a number, an enumeration, or a value.
template <class T>
concept ValueFieldType = (BuiltinType<T> && std::integral<T>) || DeclaredEnum<T> || SchemaClass<T>;

// A field of a counted object is reached by reflection alone.
template <class T>
concept ObjectFieldType =
    BuiltinType<ReflectedType<T>> || DeclaredEnum<T> || detail::isReference<T> || requires {
    T::_fwkType();
};

// A KeyedCollection, or what is used as one.
template <class T>
concept CollectionFieldType = requires {
    typename T::Entry;
    typename T::Key;
    typename T::Value;
};

} // namespace Vel
