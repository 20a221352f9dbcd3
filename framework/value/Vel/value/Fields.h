// Fields.h - the attributes that are part of a value, as an index sequence over its schema.
//
// Test: Value_test.cpp.
#pragma once

#include <Vel/value/Schema.h>
#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace Vel {

namespace detail {

template <class T>
using AttributesOf = std::remove_cvref_t<decltype(schemaOf<T>.attributes)>;

// Which attributes are fields.
template <class Attributes, std::size_t... index>
constexpr std::array<bool, sizeof...(index)> fieldFlags(std::index_sequence<index...>) {
    return {isField<AttributeClassAt<index, Attributes>>...};
}

template <class T>
inline constexpr auto fieldFlagsOf =
    fieldFlags<AttributesOf<T>>(std::make_index_sequence<AttributesOf<T>::size>());

// The position of the nth field.
template <class T>
constexpr std::size_t fieldPosition(std::size_t n) {
    std::size_t position = 0;
    while (!fieldFlagsOf<T>[position] || n-- != 0) ++position;
    return position;
}

template <class T>
constexpr std::size_t fieldCount() {
    std::size_t count = 0;
    for (const bool isAField : fieldFlagsOf<T>) count += isAField ? 1 : 0;
    return count;
}

template <class T, std::size_t... n>
std::index_sequence<fieldPosition<T>(n)...> fieldIndices(std::index_sequence<n...>);

} // namespace detail

// Positions of T's fields among its attributes.
template <class T>
using FieldIndices =
    decltype(detail::fieldIndices<T>(std::make_index_sequence<detail::fieldCount<T>()>()));

// The attribute at a position.
template <class T, std::size_t index>
inline constexpr const auto& attributeAt = attributeIn<index>(schemaOf<T>.attributes);

template <class T, std::size_t index>
using FieldType = std::remove_cvref_t<decltype(std::declval<T&>().*(attributeAt<T, index>.access))>;

template <class T, std::size_t index>
inline constexpr bool isCollectionField =
    AttributeClassAt<index, detail::AttributesOf<T>>::kind == AttributeKind::collection;

namespace detail {

template <class Visit, std::size_t... index>
constexpr bool visitUntilFalse(Visit& visit, std::index_sequence<index...> /*fields*/) {
    return (visit.template operator()<index>() && ...);
}

template <class Visit, std::size_t... index>
[[gnu::always_inline]] constexpr void visitAll(Visit& visit,
                                               std::index_sequence<index...> /*fields*/) {
    (visit.template operator()<index>(), ...);
}

template <std::size_t... index>
constexpr std::size_t onlyOne(std::index_sequence<index...> /*fields*/) {
    static_assert(sizeof...(index) == 1, "a scalar has exactly one field");
    return (index + ...);
}

} // namespace detail

// Calls visit.operator()<index>() for each field in declaration order until one returns false; says
// whether none did.
template <class T, class Visit>
constexpr bool allFields(Visit visit) {
    return detail::visitUntilFalse(visit, FieldIndices<T>());
}

// Calls visit.operator()<index>() for each field in declaration order.
template <class T, class Visit>
[[gnu::always_inline]] constexpr void forEachField(Visit visit) {
    detail::visitAll(visit, FieldIndices<T>());
}

// The one field of a scalar.
template <class T>
inline constexpr std::size_t scalarField = detail::onlyOne(FieldIndices<T>());

} // namespace Vel
