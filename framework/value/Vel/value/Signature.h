// Signature.h - what a function or member function takes and gives, as types.
//
// Test: GenericIf_test.cpp.
#pragma once

#include <cstddef>
#include <tuple>

namespace Vel {

template <class Function>
struct Signature;

template <class R, class... A>
struct Signature<R (*)(A...)> {
    using Result = R;
    using Arguments = std::tuple<A...>;
    static constexpr bool changes = false; // whether it may change its object
};

template <class R, class... A>
struct Signature<R (*)(A...) noexcept> : Signature<R (*)(A...)> {};

template <class R, class T, class... A>
struct Signature<R (T::*)(A...) const> : Signature<R (*)(A...)> {};

template <class R, class T, class... A>
struct Signature<R (T::*)(A...) const noexcept> : Signature<R (*)(A...)> {};

template <class R, class T, class... A>
struct Signature<R (T::*)(A...)> : Signature<R (*)(A...)> {
    static constexpr bool changes = true;
};

template <class R, class T, class... A>
struct Signature<R (T::*)(A...) noexcept> : Signature<R (T::*)(A...)> {};

template <class Function>
inline constexpr std::size_t argumentCountOf =
    std::tuple_size_v<typename Signature<Function>::Arguments>;

template <class Function, std::size_t index>
using ArgumentOf = std::tuple_element_t<index, typename Signature<Function>::Arguments>;

} // namespace Vel
