// TypeOf.h - from a C++ type to its descriptor and its name, whatever kind of type it is.
//
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/Builtin.h>
#include <Vel/Integers.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/VelType.h>
#include <Vel/value/Enum.h>
#include <Vel/value/FieldTypes.h>
#include <Vel/value/Schema.h>
#include <atomic>
#include <cstddef>
#include <type_traits>

namespace Vel {

namespace detail {

template <class T>
struct Pointed {
    using Type = T;
};

template <class T>
struct Pointed<Ptr<T>> {
    using Type = T;
};

template <class T>
VelType* findTypeOf() {
    if constexpr (BuiltinType<T>)
        return Builtin<T>::_fwkType();
    else if constexpr (DeclaredEnum<T>)
        return velEnumType(T());
    else
        return Pointed<T>::Type::_fwkType();
}

// Kept where it is used: a descriptor never changes its place, and finding it is a call into
//                        another library. Hidden, so
// that each library reads its own without a table of addresses.
template <class T>
[[gnu::visibility("hidden")]] inline constinit std::atomic<VelType*> keptType = nullptr;

template <class T>
[[gnu::noinline]] VelType* keepTypeOf() {
    VelType* const type = findTypeOf<T>();
    keptType<T>.store(type, std::memory_order_release);
    return type;
}

// typeOf<T>() without a call, once it was asked for here; null before.
template <class T>
VelType* keptTypeOf() noexcept {
    return keptType<T>.load(std::memory_order_acquire);
}

} // namespace detail

template <class T>
VelType* typeOf() {
    VelType* const type = detail::keptTypeOf<T>();
    return type != nullptr ? type : detail::keepTypeOf<T>();
}

// "Net::DeviceId"
template <class T>
constexpr Name qualifiedNameOf() {
    if constexpr (DeclaredEnum<T>)
        return enumSchema<T>.qualifiedName();
    else
        return schemaOf<T>.qualifiedName;
}

template <class T>
constexpr Name shortNameOf() {
    if constexpr (DeclaredEnum<T>)
        return enumSchema<T>.shortName();
    else
        return schemaOf<T>.shortName();
}

} // namespace Vel
