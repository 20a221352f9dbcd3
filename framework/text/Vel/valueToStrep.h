// valueToStrep.h - text forms of the builtin types: each is a Python expression that the reader of
// the same type (sequenceToValue.h) takes back. Other types overload the name in their own
// namespace.
#pragma once

#include <Vel/Export.h>
#include <Vel/String8.h>

namespace Vel {

// True or False.
VEL_API String8 valueToStrep(bool value);

// Bare decimal digits, after a minus if negative. Narrower integers convert to the overload of
// their sign; a character is a number, too.
VEL_API String8 valueToStrep(unsigned long long value);
VEL_API String8 valueToStrep(long long value);

inline String8 valueToStrep(unsigned long value) { return valueToStrep(0ULL + value); }

inline String8 valueToStrep(unsigned value) { return valueToStrep(0ULL + value); }

inline String8 valueToStrep(long value) { return valueToStrep(0LL + value); }

inline String8 valueToStrep(int value) { return valueToStrep(0LL + value); }

// The bytes between single quotes, with escapes: 7-bit text whatever the bytes are.
VEL_API String8 valueToStrep(const String8& value);

// A pointer is no truth value: a reference is written by valueToStrepOfRawPtr, a C string after it
// was made a String8.
template <class T>
String8 valueToStrep(T* pointer) = delete;

} // namespace Vel
