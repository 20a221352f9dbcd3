// EnumFunctions.h - the functions of an enumeration: declared beside it, defined in its .cpp.
//
// Test: the enumerations' tests.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/NboAttrLog.h>
#include <Vel/Ptr.h>
#include <Vel/String8.h>
#include <Vel/strepToValue.h>
#include <Vel/value/Enum.h>
#include <Vel/value/EnumNames.h>
#include <iosfwd>
#include <string_view>

namespace Vel {

class VelType;
template <class T>
class ValueGenericIf;

} // namespace Vel

// What the header knows is inline. For any other number or name the library is asked: it may be
// newer.
#define VEL_ENUM_FUNCTIONS(API, E)                                                                 \
    API extern const ::Vel::EnumNames<E> velNamesOf##E;                                            \
    API ::Vel::String8 velEnumText(E value);                                                       \
    API E velEnumNamed(std::string_view name, E);                                                  \
    /* The name; E(number) for an undeclared number. */                                            \
    API inline ::Vel::String8 stringValue(E value) {                                               \
        const auto number = static_cast<::Vel::U32>(value);                                        \
        if (number < velNamesOf##E.size()) [[likely]]                                              \
            return ::Vel::String8::ofEternal(velNamesOf##E[number]);                               \
        return velEnumText(value);                                                                 \
    }                                                                                              \
    /* The declared enumerator of that number or exact name; throws Vel::RangeException. */        \
    API E E##Instance(unsigned number);                                                            \
    API inline E E##Instance(::Vel::String8 name) {                                                \
        const ::Vel::S32 number = ::Vel::enumNumber<E>(name);                                      \
        return number >= 0 ? static_cast<E>(number) : velEnumNamed(name, E());                     \
    }                                                                                              \
    /* Reads one quoted name; stores it through `value` unless that is null, and returns it. */    \
    API E sequenceToValue(::Vel::String8::IteratorConst& pos,                                      \
                          const ::Vel::String8::IteratorConst& end, E* value);                     \
    /* The name between single quotes. */                                                          \
    API ::Vel::String8 valueToStrep(const E& value);                                               \
    /* The bare name. */                                                                           \
    API std::ostream& operator<<(std::ostream& out, const E& value);                               \
    API ::Vel::VelType* _fwkType_##E();                                                            \
    /* Its adapter: <Vel/value/ValueGenericIf.h>. */                                               \
    using E##_GenericIf_ = ::Vel::ValueGenericIf<E>;                                               \
    inline ::Vel::VelType* velEnumType(E) { return _fwkType_##E(); }                               \
    static_assert(true)
