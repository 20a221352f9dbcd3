// AttributeTraits.h - what reflection needs to know of one attribute of a schema, as types and
// constants.
//
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/Name.h>
#include <Vel/VelAttr.h>
#include <Vel/value/Fields.h>
#include <Vel/value/Signature.h>
#include <Vel/value/TypeOf.h>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Vel {

template <class T>
inline constexpr std::size_t attributeCountOf = detail::AttributesOf<T>::size;

template <class T, std::size_t index>
using AttributeAt = AttributeClassAt<index, detail::AttributesOf<T>>;

template <class T, std::size_t index>
using AccessAt = std::remove_cvref_t<decltype(attributeAt<T, index>.access)>;

template <class T, std::size_t index>
using WriterAt = std::remove_cvref_t<decltype(attributeAt<T, index>.writer)>;

template <class T, std::size_t index>
inline constexpr AttributeKind kindAt = AttributeAt<T, index>::kind;

// Position of the field of that name.
template <class T>
constexpr std::size_t fieldNamed(std::string_view name) {
    std::size_t found = attributeCountOf<T>;
    forEachField<T>([&]<std::size_t i>() {
        if (attributeAt<T, i>.name == name) found = i;
    });
    return found;
}

// A constructor's argument has the type of the field that it is named after.
template <class T, std::size_t index>
using ConstructorArgument = FieldType<T, fieldNamed<T>(schemaOf<T>.constructor[index])>;

template <class T>
inline constexpr std::size_t constructorArgumentCount = schemaOf<T>.constructor.size();

template <class Collection>
concept KeyedByValue = requires(const typename Collection::Value& value) {
    Collection::Entry::keyOf(value);
};

// Whether the members of a collection hold their own key, and so the name of that attribute.
template <class Collection>
inline constexpr bool membersHoldKey =
    KeyedByValue<Collection> || detail::isReference<typename Collection::Value>;

// The name of the one field of a type that has the given type.
template <class T, class Field>
constexpr Name fieldOfType() {
    Name found;
    forEachField<T>([&]<std::size_t i>() {
        if constexpr (std::is_same_v<FieldType<T, i>, Field>) found = attributeAt<T, i>.name;
    });
    return found;
}

namespace detail {

template <class T, std::size_t index, AttributeKind kind = kindAt<T, index>>
struct AttributeTraits; // Value: of the value, or void

template <class T, std::size_t index>
struct AttributeTraits<T, index, AttributeKind::stored> {
    using Value = ReflectedType<FieldType<T, index>>;
    static constexpr bool isWritable = !std::is_null_pointer_v<WriterAt<T, index>>;
    static constexpr VelAttr::AttrFlags flags = VelAttr::AttrFlags::stored;
};

template <class T, std::size_t index>
struct AttributeTraits<T, index, AttributeKind::computed> {
    // The hash of a value that is its own hash has the width of the value.
    static constexpr bool isPlainHash =
        std::is_same_v<AccessAt<T, index>, CallHash> && schemaOf<T>.hash == Hash::plainValue;

    static auto valueType() {
        if constexpr (isPlainHash)
            return std::type_identity<FieldType<T, scalarField<T>>>();
        else
            return std::type_identity<
                ReflectedType<std::invoke_result_t<AccessAt<T, index>, const T&>>>();
    }

    using Value = typename decltype(valueType())::type;
    static constexpr bool isWritable = false;
    static constexpr VelAttr::AttrFlags flags = VelAttr::AttrFlags::computed;
};

template <class T, std::size_t index>
struct AttributeTraits<T, index, AttributeKind::constant> {
    using Value = ReflectedType<std::invoke_result_t<AccessAt<T, index>>>;
    static constexpr bool isWritable = false;
    static constexpr VelAttr::AttrFlags flags = VelAttr::AttrFlags::constant;
};

template <class T, std::size_t index>
struct AttributeTraits<T, index, AttributeKind::function> {
    using Function = AccessAt<T, index>;
    using Value = ReflectedType<typename Signature<Function>::Result>;
    static constexpr bool isWritable = false;
    static constexpr VelAttr::AttrFlags flags =
        Signature<Function>::changes
            ? VelAttr::AttrFlags(VelAttr::AttrFlags::function) | VelAttr::AttrFlags::changing
            : VelAttr::AttrFlags(VelAttr::AttrFlags::function);
};

template <class T, std::size_t index>
struct AttributeTraits<T, index, AttributeKind::collection> {
    using Collection = FieldType<T, index>;
    using Key = typename Collection::Key;
    using Value = typename Collection::Value;
    using Member = typename Pointed<Value>::Type;
    static constexpr bool isWritable = true;
    static constexpr bool holdsKey = membersHoldKey<Collection>;
    static constexpr VelAttr::AttrFlags flags =
        VelAttr::AttrFlags(VelAttr::AttrFlags::collection) | VelAttr::AttrFlags::stored;

    // What a key is called where it is missing.
    static constexpr Name keyName() {
        if constexpr (holdsKey)
            return fieldOfType<Member, Key>();
        else
            return "key";
    }
};

template <class T, std::size_t index>
struct AttributeTraits<T, index, AttributeKind::keyed> {
    using Reader = decltype(AccessAt<T, index>::reader);
    using Key = ReflectedType<ArgumentOf<Reader, 0>>;
    using Value = ReflectedType<typename Signature<Reader>::Result>;
    static constexpr bool isWritable = true;
    static constexpr bool holdsKey = false;
    static constexpr VelAttr::AttrFlags flags =
        VelAttr::AttrFlags(VelAttr::AttrFlags::collection) | VelAttr::AttrFlags::computed;

    static constexpr Name keyName() { return "key"; }
};

} // namespace detail

template <class T, std::size_t index>
using AttributeTraits = detail::AttributeTraits<T, index>;

template <class T, std::size_t index>
concept CollectionAttribute = kindAt<T, index>
== AttributeKind::collection || kindAt<T, index> == AttributeKind::keyed;

} // namespace Vel
