// ArgumentFrom.h - from an adapter to the C++ value that a call takes, and from a C++ value to an
// adapter.
//
// Errors: an adapter that is missing, or holds neither the wanted type nor a refinement of it,
//         throws GenericIf::throwTypeException() with the argument's name.
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/GenericIf.h>
#include <Vel/Name.h>
#include <Vel/value/TypeOf.h>
#include <type_traits>

namespace Vel {

namespace detail {

// Of a refinement, or of an adapter that does not tell where its value is.
template <class T>
[[gnu::noinline]] T argumentSeenAs(const GenericIf* adapter, Name name) {
    const void* const value = adapter != nullptr ? adapter->voidPtr(typeOf<T>()) : nullptr;
    if (value == nullptr) GenericIf::throwTypeException(name);
    if constexpr (isReference<T>) {
        auto* object = static_cast<PtrInterface*>(const_cast<void*>(value));
        return T(static_cast<typename Pointed<T>::Type*>(object));
    } else {
        return *static_cast<const T*>(value);
    }
}

template <class T>
using Passed = std::conditional_t<std::is_scalar_v<T>, T, const T&>;

template <class T>
[[gnu::noinline]] void answerByCall(GenericIf* result, Passed<T> value) {
    if (result == nullptr) GenericIf::throwTypeException("result");
    if constexpr (isReference<T>)
        result->voidPtrIs(static_cast<const PtrInterface*>(value.ptr()), typeOf<T>());
    else
        result->voidPtrIs(&value, typeOf<T>());
}

} // namespace detail

// T: a value type, enumeration or builtin, or Ptr to a class of objects. What is given is a copy or
//    a reference.
template <class T>
[[gnu::always_inline]] inline T argumentFrom(const GenericIf* adapter, Name name) {
    if constexpr (!detail::isReference<T>)
        if (adapter != nullptr && adapter->holds(detail::keptTypeOf<T>())) [[likely]]
            return *static_cast<const T*>(adapter->held());
    return detail::argumentSeenAs<T>(adapter, name);
}

// Puts an answer into the adapter that the caller has given for it.
template <class T>
[[gnu::always_inline]] inline void answer(const Ptr<GenericIf>& result, const T& value) {
    if constexpr (!detail::isReference<T>)
        if (result && result->holds(detail::keptTypeOf<T>())) [[likely]] {
            *static_cast<T*>(result->held()) = value;
            return;
        }
    detail::answerByCall<T>(result.ptr(), value);
}

// A new adapter of a value, or of the object that is referred to.
template <class T>
Ptr<GenericIf> adapterOf(const T& value, bool isConst) {
    if constexpr (detail::isReference<T>)
        return typeOf<T>()->genericIf(static_cast<PtrInterface*>(value.ptr()), isConst);
    else
        return typeOf<T>()->genericIf(static_cast<const void*>(&value), isConst);
}

} // namespace Vel
