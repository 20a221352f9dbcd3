// textErrors.h - what the readers of the text form throw. Every one of them is a RangeException.
//
// Texts:  a column counts the bytes before the place, from 0 at the start of the text that the
//         cursor walks. What was found there is quoted between double quotes, bytes that cannot be
//         printed as \x and two digits, and cut after 24 bytes, which three dots show.
// Cursor: a reader that throws has not moved its cursor.
#pragma once

#include <Vel/Export.h>
#include <Vel/RangeException.h>
#include <Vel/String8.h>
#include <string_view>
#include <typeinfo>

namespace Vel {

// No value of `type` begins at `it`, nor behind the blanks there:
//     cannot convert "abc" at column 3 to unsigned long long
//     cannot convert end of text at column 6 to bool
[[noreturn]] VEL_API void cannotConvert(const String8::IteratorConst& it,
                                        const String8::IteratorConst& end,
                                        const std::type_info& type);

// The number from `it`, or behind the blanks there, to `numberEnd` is no value of `type`:
//     number "18446744073709551616" at column 0 is out of range for unsigned long long
[[noreturn]] VEL_API void numberOutOfRange(const String8::IteratorConst& it,
                                           const String8::IteratorConst& numberEnd,
                                           const std::type_info& type);

// Something other than `expected` stands at `it`:
//     expected "," at column 7, found "}) xyz"
[[noreturn]] VEL_API void expectedInstead(std::string_view expected,
                                          const String8::IteratorConst& it,
                                          const String8::IteratorConst& end);

// Throws `failure` anew, with the same ids and expected(), and with the attribute's name before its
// text. Names of nested attributes follow each other from the outermost inwards:
//     in attribute 'resourceId', in attribute 'id': cannot convert "abc" at column 60 to bool
[[noreturn]] VEL_API void rethrowFromDeserializeAttr(const RangeException& failure,
                                                     const String8& attributeName);

} // namespace Vel
