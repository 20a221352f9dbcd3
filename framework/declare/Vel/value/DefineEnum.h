// DefineEnum.h - what an enumeration's .cpp says: VEL_DEFINE_ENUM(Command).
//
// Test: Value_test.cpp and the enumerations' tests.
#pragma once

#include <Vel/RangeException.h>
#include <Vel/sequenceToValue.h>
#include <Vel/value/EnumFunctions.h>
#include <Vel/value/ValueType.h>
#include <Vel/value/WriteStrep.h>
#include <cstddef>
#include <ostream>
#include <string_view>

namespace Vel::detail {

template <DeclaredEnum E>
String8 enumText(E value) {
    char buffer[enumNameMax<E>];
    const char* end = writeEnumName(buffer, value);
    return String8(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
}

template <DeclaredEnum E>
E enumOfNumber(unsigned number) {
    if (enumSchema<E>.name(static_cast<S32>(number)).empty())
        throwRangeException(String8(enumSchema<E>.shortName()));
    return static_cast<E>(number);
}

template <DeclaredEnum E>
E enumOfName(std::string_view name) {
    const S32 number = enumNumber<E>(name);
    if (number < 0) throwRangeException(String8(enumSchema<E>.shortName()));
    return static_cast<E>(number);
}

template <DeclaredEnum E>
E readEnum(String8::IteratorConst& pos, const String8::IteratorConst& end, E* value) {
    String8::IteratorConst it = pos;
    const E read = enumOfName<E>(sequenceToValue(it, end, static_cast<String8*>(nullptr)).view());
    pos = it;
    if (value != nullptr) *value = read;
    return read;
}

} // namespace Vel::detail

#define VEL_DEFINE_ENUM(E)                                                                         \
    constinit const ::Vel::EnumNames<E> velNamesOf##E = ::Vel::enumNames<E>();                     \
    /* The inline functions stand in the library, too, for who has linked them there. */           \
    [[gnu::used]] static constexpr ::Vel::String8 (*velKeepsText##E)(E) = stringValue;             \
    [[gnu::used]] static constexpr E (*velKeepsInstance##E)(::Vel::String8) = E##Instance;         \
    ::Vel::String8 velEnumText(E value) { return ::Vel::detail::enumText(value); }                 \
    E velEnumNamed(std::string_view name, E) { return ::Vel::detail::enumOfName<E>(name); }        \
    E E##Instance(unsigned number) { return ::Vel::detail::enumOfNumber<E>(number); }              \
    E sequenceToValue(::Vel::String8::IteratorConst& pos,                                          \
                      const ::Vel::String8::IteratorConst& end, E* value) {                        \
        return ::Vel::detail::readEnum(pos, end, value);                                           \
    }                                                                                              \
    ::Vel::String8 valueToStrep(const E& value) { return ::Vel::strepOf(value); }                  \
    std::ostream& operator<<(std::ostream& out, const E& value) {                                  \
        return out << stringValue(value);                                                          \
    }                                                                                              \
    ::Vel::VelType* _fwkType_##E() { return ::Vel::ValueType<E>::instance(); }
