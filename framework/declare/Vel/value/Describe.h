// Describe.h - from a type's schema to its description: constant data, made at compile time.
//
// Test: Module_test.cpp.
#pragma once

#include <Vel/TypeDescription.h>
#include <Vel/value/AttributeTraits.h>
#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace Vel {

namespace detail {

template <class T>
constexpr TypeGetter typeGetter() {
    if constexpr (std::is_void_v<T>)
        return nullptr;
    else
        return &typeOf<T>;
}

template <class T, std::size_t... i>
constexpr std::array<ArgumentDescription, sizeof...(i)> constructorOf(std::index_sequence<i...>) {
    return {ArgumentDescription{schemaOf<T>.constructor[i],
                                typeGetter<ConstructorArgument<T, i>>()}...};
}

template <class T>
inline constexpr auto constructorDescription =
    constructorOf<T>(std::make_index_sequence<constructorArgumentCount<T>>());

// An enumeration has no constructor arguments.
template <DeclaredEnum E>
inline constexpr std::array<ArgumentDescription, 0> constructorDescription<E>{};

template <class T, std::size_t index, std::size_t... i>
constexpr std::array<ArgumentDescription, sizeof...(i)> functionArguments(
    std::index_sequence<i...>) {
    return {ArgumentDescription{attributeAt<T, index>.arguments[i],
                                typeGetter<ReflectedType<ArgumentOf<AccessAt<T, index>, i>>>()}...};
}

// A function's own; those of a member's constructor, for objects that a collection makes.
template <class T, std::size_t index>
constexpr auto argumentsOf() {
    if constexpr (kindAt<T, index> == AttributeKind::function) {
        static_assert(argumentCountOf<AccessAt<T, index>> == attributeAt<T, index>.arguments.size(),
                      "every argument of a function attribute has a name");
        return functionArguments<T, index>(
            std::make_index_sequence<argumentCountOf<AccessAt<T, index>>>());
    } else if constexpr (kindAt<T, index> == AttributeKind::collection) {
        if constexpr (isReference<typename AttributeTraits<T, index>::Value>)
            return constructorDescription<typename AttributeTraits<T, index>::Member>;
        else
            return std::array<ArgumentDescription, 0>{};
    } else {
        return std::array<ArgumentDescription, 0>{};
    }
}

template <class T, std::size_t index>
inline constexpr auto argumentDescription = argumentsOf<T, index>();

template <class T, std::size_t index>
constexpr AttributeDescription attributeDescription() {
    using Traits = AttributeTraits<T, index>;
    constexpr const auto& attribute = attributeAt<T, index>;
    AttributeDescription result{attribute.name,
                                attribute.id,
                                typeGetter<typename Traits::Value>(),
                                Traits::flags,
                                attribute.introspection,
                                nullptr,
                                Name(),
                                argumentDescription<T, index>};
    if constexpr (CollectionAttribute<T, index>) {
        result.keyType = typeGetter<typename Traits::Key>();
        // Registered with its key attribute, as a function is with its arguments: nothing of it is
        // shown as stored.
        if constexpr (Traits::holdsKey) {
            result.keyAttribute = Traits::keyName();
            result.introspection = Introspection::plain;
        }
    }
    if constexpr (kindAt<T, index> != AttributeKind::function) {
        if (Traits::isWritable) result.flags = result.flags | VelAttr::AttrFlags::writable;
    }
    if (attribute.id == 0) result.flags = result.flags | VelAttr::AttrFlags::key;
    return result;
}

// Those that the type adds to what it has from a base.
template <class T, std::size_t... i>
constexpr std::array<AttributeDescription, sizeof...(i)> ownAttributes(std::index_sequence<i...>) {
    return {attributeDescription<T, schemaOf<T>.inheritedCount + i>()...};
}

template <class T>
inline constexpr auto attributeDescriptions =
    ownAttributes<T>(std::make_index_sequence<attributeCountOf<T> - schemaOf<T>.inheritedCount>());

template <DeclaredEnum E, std::size_t... i>
constexpr std::array<AttributeDescription, sizeof...(i)> enumerators(std::index_sequence<i...>) {
    return {AttributeDescription{enumSchema<E>.names()[i],
                                 static_cast<AttributeId>(i),
                                 &typeOf<E>,
                                 VelAttr::AttrFlags::enumerator,
                                 Introspection::plain,
                                 nullptr,
                                 Name(),
                                 {}}...};
}

template <DeclaredEnum E>
inline constexpr auto attributeDescriptions<E> =
    enumerators<E>(std::make_index_sequence<enumSchema<E>.names().size()>());

template <class T>
constexpr TypeDescription describe() {
    TypeDescription result{qualifiedNameOf<T>(),
                           &typeOf<T>,
                           sizeof(T),
                           true,
                           DeclaredEnum<T>,
                           DeclaredEnum<T>,
                           constructorDescription<T>,
                           attributeDescriptions<T>};
    if constexpr (!DeclaredEnum<T>) {
        result.isValue = !std::is_base_of_v<PtrInterface, T>;
        result.hasValueAttribute = schemaOf<T>.form == Form::scalar;
    } else {
        result.isValue = false;
    }
    return result;
}

} // namespace detail

template <class T>
inline constexpr TypeDescription descriptionOf = detail::describe<T>();

} // namespace Vel
