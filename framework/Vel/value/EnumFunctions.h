// EnumFunctions.h - the functions of an enumeration: declared beside it, defined in its .cpp.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/NboAttrLog.h>
#include <Vel/Ptr.h>
#include <Vel/String8.h>
#include <Vel/VelType.h>
#include <Vel/needString.h>
#include <Vel/value/Enum.h>
#include <iosfwd>

namespace Vel {

// Reads a whole text into *value: throws "junk at column %lld deserializing %s" if something is left. What throws leaves
// *value alone.
template <DeclaredEnum E>
void strepToValue(const String8& text, E* value) {
    String8::IteratorConst pos = text.begin();
    const E read = sequenceToValue(pos, text.end(), static_cast<E*>(nullptr));
    needEnd(pos, text.end(), text);
    *value = read;
}

} // namespace Vel

#define VEL_ENUM_FUNCTIONS(API, E)                                                                 \
    /* The name; E(number) for an undeclared number. */                                            \
    API ::Vel::String8 stringValue(E value);                                                       \
    /* The declared enumerator of that number or exact name; throws Vel::RangeException. */        \
    API E E##Instance(unsigned number);                                                            \
    API E E##Instance(::Vel::String8 name);                                                        \
    /* Reads one quoted name; stores it through `value` unless that is null, and returns it. */    \
    API E sequenceToValue(::Vel::String8::IteratorConst& pos,                                      \
                          const ::Vel::String8::IteratorConst& end, E* value);                     \
    /* The name between single quotes. */                                                          \
    API ::Vel::String8 valueToStrep(const E& value);                                               \
    /* The bare name. */                                                                           \
    API std::ostream& operator<<(std::ostream& out, const E& value);                               \
    API ::Vel::VelType* _fwkType_##E();                                                            \
    inline ::Vel::VelType* velEnumType(E) { return _fwkType_##E(); }                               \
    static_assert(true)
