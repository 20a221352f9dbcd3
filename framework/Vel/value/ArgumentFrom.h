// ArgumentFrom.h - from an adapter to the C++ value that a call takes, and from a C++ value to an adapter.
//
// Errors: an adapter that is missing, or holds neither the wanted type nor a refinement of it, throws
//         GenericIf::throwTypeException() with the argument's name.
#pragma once

#include <Vel/GenericIf.h>
#include <Vel/Name.h>
#include <Vel/value/TypeOf.h>

namespace Vel {

// T: a value type, enumeration or builtin, or Ptr to a class of objects. What is given is a copy or a reference.
template <class T>
T argumentFrom(const GenericIf* adapter, Name name) {
    const void* const value = adapter != nullptr ? adapter->voidPtr(typeOf<T>()) : nullptr;
    if (value == nullptr) GenericIf::throwTypeException(name);
    if constexpr (detail::isReference<T>) {
        auto* object = static_cast<PtrInterface*>(const_cast<void*>(value));
        return T(static_cast<typename detail::Pointed<T>::Type*>(object));
    } else {
        return *static_cast<const T*>(value);
    }
}

// Puts an answer into the adapter that the caller has given for it.
template <class T>
void answer(const Ptr<GenericIf>& result, const T& value) {
    if (!result) GenericIf::throwTypeException("result");
    if constexpr (detail::isReference<T>)
        result->voidPtrIs(static_cast<const PtrInterface*>(value.ptr()), typeOf<T>());
    else
        result->voidPtrIs(&value, typeOf<T>());
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
