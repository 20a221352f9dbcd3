// DefineEnum.h - what an enumeration's .cpp says: VEL_DEFINE_ENUM(Command).
#pragma once

#include <Vel/RangeException.h>
#include <Vel/sequenceToValue.h>
#include <Vel/value/EnumFunctions.h>
#include <Vel/value/ValueType.h>
#include <Vel/value/WriteStrep.h>
#include <algorithm>
#include <array>
#include <ostream>

namespace Vel::detail {

// A declared enumerator's name is made once and shared from then on.
template <DeclaredEnum E>
String8 enumName(E value) {
    static const auto* const names = [] {
        auto* made = new std::array<String8, enumSchema<E>.names().size()>;
        std::ranges::transform(enumSchema<E>.names(), made->begin(), String8::eternal);
        return made;
    }();
    if (const auto number = static_cast<U32>(value); number < names->size())
        return (*names)[number];
    char buffer[enumSchema<E>.longest()];
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
    const S32 number = enumSchema<E>.number(name);
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
    ::Vel::String8 stringValue(E value) { return ::Vel::detail::enumName(value); }                 \
    E E##Instance(unsigned number) { return ::Vel::detail::enumOfNumber<E>(number); }              \
    E E##Instance(::Vel::String8 name) { return ::Vel::detail::enumOfName<E>(name.view()); }       \
    E sequenceToValue(::Vel::String8::IteratorConst& pos,                                          \
                      const ::Vel::String8::IteratorConst& end, E* value) {                        \
        return ::Vel::detail::readEnum(pos, end, value);                                           \
    }                                                                                              \
    ::Vel::String8 valueToStrep(const E& value) { return ::Vel::strepOf(value); }                  \
    std::ostream& operator<<(std::ostream& out, const E& value) {                                  \
        return out << ::Vel::detail::enumName(value);                                              \
    }                                                                                              \
    ::Vel::VelType* _fwkType_##E() { return ::Vel::ValueType<E>::instance(); }
