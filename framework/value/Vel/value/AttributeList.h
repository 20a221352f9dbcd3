// AttributeList.h - the attributes of one schema in order, each of a class of its own: a tuple of
// constants that grows at its end.
//
// Cost: an attribute costs the compiler one class, and a longer list nothing for those that were
//       there before. Every client compiles every list, so std::tuple and std::tuple_cat, which
//       look at each element again, were most of what a type's header cost.
// Test: Value_test.cpp.
#pragma once

#include <cstddef>
#include <utility>

namespace Vel {

namespace detail {

template <std::size_t index, class A>
struct AttributePlace {
    A attribute;
};

template <class Indices, class... A>
struct AttributePlaces;

template <std::size_t... index, class... A>
struct AttributePlaces<std::index_sequence<index...>, A...> : AttributePlace<index, A>... {};

} // namespace detail

template <class... A>
struct AttributeList : detail::AttributePlaces<std::index_sequence_for<A...>, A...> {
    static constexpr std::size_t size = sizeof...(A);
};

// The attribute at a position.
template <std::size_t index, class A>
constexpr const A& attributeIn(const detail::AttributePlace<index, A>& place) {
    return place.attribute;
}

namespace detail {

template <std::size_t index, class A>
A classAt(const AttributePlace<index, A>&);

template <std::size_t... index, class... A, class Added>
constexpr AttributeList<A..., Added> extended(
    const AttributePlaces<std::index_sequence<index...>, A...>& list, const Added& added) {
    return {{{static_cast<const AttributePlace<index, A>&>(list).attribute}..., {added}}};
}

template <std::size_t... index, class... A, class Visit>
constexpr void visitEach(const AttributePlaces<std::index_sequence<index...>, A...>& list,
                         Visit& visit) {
    (visit(static_cast<const AttributePlace<index, A>&>(list).attribute), ...);
}

} // namespace detail

// The class of the attribute at a position.
template <std::size_t index, class List>
using AttributeClassAt = decltype(detail::classAt<index>(std::declval<const List&>()));

} // namespace Vel
