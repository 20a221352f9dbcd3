// Value.h - base of every value type: from its one schema it gets its operators, its hash and its
// place in the framework.
//
//     class NET_API DeviceId : public Vel::Value<DeviceId> {
//     public:
//         VEL_VALUE(DeviceId)
//         constexpr DeviceId() noexcept = default;
//         constexpr explicit DeviceId(Vel::U16 value) noexcept : value_(value) {}
//         constexpr Vel::U16 value() const noexcept { return value_; }
//
//         static constexpr auto schema() {
//             return Vel::scalarSchema<DeviceId>("Net::DeviceId")
//                 .stored(2, "value", &DeviceId::value_);
//         }
//
//     private:
//         Vel::U16 value_ = 0;
//     };
//     VEL_VALUE_FUNCTIONS(NET_API, DeviceId);     // behind the class, in its namespace
//     VEL_DEFINE_VALUE(DeviceId)                  // in its .cpp: all the rest is made there
//
// A refinement derives from Vel::Refinement<LogicalTableId, LogicalResourceId> instead and states
// its name and what its constructor fixes; it compares, hashes and logs as its base.
//
// Layout: the base is empty: a value is the size of its fields.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/NboAttrLog.h>
#include <Vel/StreamBogon.h>
#include <Vel/String8.h>
#include <Vel/strepToValue.h>
#include <Vel/value/Compare.h>
#include <Vel/value/HashOf.h>
#include <Vel/value/LogFields.h>
#include <Vel/value/Schema.h>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string_view> // std::hash

namespace Vel {

class VelType;
template <class T>
class ValueType;
template <class T>
class ValueGenericIf;

// A value that is compared for equality only, and has no hash unless it declares one.
template <class T>
class UnorderedValue {
public:
    using _Type = ValueType<T>;
    using GenericIf_ = ValueGenericIf<T>;

    friend constexpr bool operator==(const T& a, const T& b) { return fieldsEqual(a, b); }

    friend constexpr bool operator!=(const T& a, const T& b) { return !(a == b); }
};

template <class T>
class Value : public UnorderedValue<T> {
public:
    friend constexpr bool operator<(const T& a, const T& b) { return fieldsLess(a, b); }

    friend constexpr bool operator<=(const T& a, const T& b) { return !(b < a); }

    friend constexpr bool operator>(const T& a, const T& b) { return !(a <= b); }

    friend constexpr bool operator>=(const T& a, const T& b) { return !(a < b); }

    // 32 bits, by the rule of the schema's hashedBy. A type with a rule of its own declares its own
    // hash().
    constexpr U32 hash() const { return hashByFields(static_cast<const T&>(*this)); }
};

template <class T, class Base>
class Refinement : public Base {
public:
    using _Type = ValueType<T>;
    using GenericIf_ = ValueGenericIf<T>;

protected:
    using Base::Base;
    constexpr Refinement() noexcept = default;
};

// A value type of this framework.
template <class T>
concept ValueClass = requires {
    typename T::_Type;
    typename T::GenericIf_;
    { T::_fwkType() } -> std::same_as<VelType*>;
};

template <class T>
concept HashedValue = ValueClass<T> && requires(const T& value) {
    value.hash();
};

// Logs the value's fields as one record, or as a part of the one that is open. Inline: a caller
// that writes many values keeps what it can in registers.
template <ValueClass T>
inline const Ptr<NboAttrLog::Out>& operator<<(const Ptr<NboAttrLog::Out>& out, const T& value) {
    logValue(*out, value);
    return out;
}

} // namespace Vel

// Stands first in the class: the constructors that read a text and a log, and the registered type.
#define VEL_VALUE(T)                                                                               \
    /* Reads one value at `pos` and leaves `pos` behind it. Throws Vel::RangeException. */         \
    T(::Vel::String8::IteratorConst& pos, const ::Vel::String8::IteratorConst& end);               \
    /* Reads what operator<< onto a log wrote. Throws Vel::Exception. */                           \
    T(::Vel::NboAttrLog::In* in, ::Vel::StreamBogon);                                              \
    static ::Vel::VelType* _fwkType();                                                             \
    ::Vel::VelType* fwkType() const { return _fwkType(); }

// Stands behind the class, in its namespace: the text form, as a string and on a stream.
#define VEL_VALUE_FUNCTIONS(API, T)                                                                \
    API ::Vel::String8 valueToStrep(const T& value);                                               \
    API std::ostream& operator<<(std::ostream& out, const T& value)

template <Vel::HashedValue T>
struct std::hash<T> {
    std::size_t operator()(const T& value) const noexcept { return value.hash(); }
};
