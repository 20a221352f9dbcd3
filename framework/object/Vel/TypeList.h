// TypeList.h - types in an order, as one type: what a module consists of, said once for all who
// need each of its types.
//
//     using NetTypes = Vel::TypeList<Net::Protocol, Net::Port, Net::Table>;
//     VEL_MODULE(velInitNet, NetTypes)
#pragma once

#include <cstddef>
#include <type_traits>

namespace Vel {

template <class... Types>
struct TypeList {
    static constexpr std::size_t size = sizeof...(Types);

    // The same types as the arguments of another template: List::As<std::tuple>.
    template <template <class...> class Other>
    using As = Other<Types...>;

    // Calls visit.operator()<T>() for each type in order.
    template <class Visit>
    static constexpr void forEach(Visit&& visit) {
        (visit.template operator()<Types>(), ...);
    }
};

namespace detail {

template <class... Lists>
struct Join {
    using List = TypeList<>;
};

template <class... Types>
struct Join<TypeList<Types...>> {
    using List = TypeList<Types...>;
};

template <class... First, class... Second, class... Rest>
struct Join<TypeList<First...>, TypeList<Second...>, Rest...>
    : Join<TypeList<First..., Second...>, Rest...> {};

template <template <class> class Test, class List>
struct Filter;

template <template <class> class Test, class... Types>
struct Filter<Test, TypeList<Types...>>
    : Join<std::conditional_t<Test<Types>::value, TypeList<Types>, TypeList<>>...> {};

// What stands in the place of types: they themselves, or a list of them.
template <class... Types>
struct ListOf {
    using List = TypeList<Types...>;
};

template <class... Types>
struct ListOf<TypeList<Types...>> {
    using List = TypeList<Types...>;
};

} // namespace detail

// Lists, one behind the other.
template <class... Lists>
using JoinedTypes = typename detail::Join<Lists...>::List;

// The types T of a list for which Test<T>::value is true, in their order.
template <template <class> class Test, class List>
using TypesThat = typename detail::Filter<Test, List>::List;

} // namespace Vel
