// sequenceToValue.h - readers of the builtin types: each takes one value at a cursor.
//
// Reads:   blanks, then one value; what follows it is not looked at, except that a word must end.
// Result:  the value is returned, and stored through `value` unless that is null: a null pointer of
//          the right type just says which type to read.
// Cursor:  moves behind the value.
// Errors:  RangeException (textErrors.h); cursor and `*value` are as before then.
// Form:    docs/text-form.md. Other types overload the name in their own namespace.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/String8.h>
#include <Vel/textErrors.h>
#include <concepts>
#include <utility>

namespace Vel {

// A string in single or double quotes, with the escapes that Python has for bytes.
VEL_API String8 sequenceToValue(String8::IteratorConst& it, const String8::IteratorConst& end,
                                String8* value);

// True or False, also in lower case.
VEL_API bool sequenceToValue(String8::IteratorConst& it, const String8::IteratorConst& end,
                             bool* value);

// Decimal or, after 0x, hexadecimal digits after an optional sign; -2^63 to 2^63 - 1.
VEL_API long long sequenceToValue(String8::IteratorConst& it, const String8::IteratorConst& end,
                                  long long* value);

// The same without a minus; 0 to 2^64 - 1.
VEL_API unsigned long long sequenceToValue(String8::IteratorConst& it,
                                           const String8::IteratorConst& end,
                                           unsigned long long* value);

// Narrower integers: as the widest of the same sign; a number that the type cannot hold is an
// error.
template <std::integral T>
T sequenceToValue(String8::IteratorConst& it, const String8::IteratorConst& end, T* value) {
    using Widest = std::conditional_t<std::signed_integral<T>, long long, unsigned long long>;
    String8::IteratorConst pos = it;
    const Widest wide = sequenceToValue(pos, end, static_cast<Widest*>(nullptr));
    if (!std::in_range<T>(wide)) numberOutOfRange(it, pos, typeid(T));
    it = pos;
    if (value != nullptr) *value = static_cast<T>(wide);
    return static_cast<T>(wide);
}

} // namespace Vel
