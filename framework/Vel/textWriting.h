// textWriting.h - how a number, a truth value and a string are written, into a buffer of the caller.
//
// Every function writes from `out` on, without a NUL, and returns where it stopped, so that a whole
// structured value is put together in one buffer:
//
//     char buffer[Text::numberMax + 2 + Text::truthMax];
//     char* out = Text::writeNumber(buffer, U64{7});
//     out = Text::writePlain(out, ", ");
//     out = Text::writeTruth(out, true);              // 7, True
//
// Room:    the caller provides it; numberMax, truthMax and quotedMax() say how much is enough.
// Form:    7-bit characters only, and always an expression of Python. docs/text-form.md.
// Locale:  has no influence.
#pragma once

#include <Vel/Integers.h>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Vel::Text {

inline constexpr std::size_t numberMax = 20; // 18446744073709551615, -9223372036854775808
inline constexpr std::size_t truthMax = 5;   // False

// A string of `length` bytes between its quotes, if each byte needs an escape.
constexpr std::size_t quotedMax(std::size_t length) noexcept { return 2 + 4 * length; }

// The characters as they are.
inline char* writePlain(char* out, std::string_view text) noexcept {
    if (text.empty()) return out;
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// Decimal digits; no sign unless negative, no leading zeros.
inline char* writeNumber(char* out, U32 value) noexcept {
    return std::to_chars(out, out + numberMax, value).ptr;
}

inline char* writeNumber(char* out, U64 value) noexcept {
    if (const U32 narrow = static_cast<U32>(value); narrow == value)
        return writeNumber(out, narrow);
    return std::to_chars(out, out + numberMax, value).ptr;
}

inline char* writeNumber(char* out, S64 value) noexcept {
    if (value >= 0) return writeNumber(out, static_cast<U64>(value));
    *out++ = '-';
    const U64 magnitude = 0 - static_cast<U64>(value); // modulo 2^64: right for -2^63 too
    return std::to_chars(out, out + numberMax - 1, magnitude).ptr;
}

// True or False.
inline char* writeTruth(char* out, bool value) noexcept {
    return value ? writePlain(out, "True") : writePlain(out, "False");
}

namespace detail {

inline char* writeEscape(char* out, U8 byte) noexcept {
    constexpr char hexDigits[] = "0123456789abcdef";
    *out++ = '\\';
    switch (byte) {
    case '\n': *out++ = 'n'; break;
    case '\r': *out++ = 'r'; break;
    case '\t': *out++ = 't'; break;
    case '\'':
    case '\\': *out++ = static_cast<char>(byte); break;
    default:
        *out++ = 'x';
        *out++ = hexDigits[byte >> 4];
        *out++ = hexDigits[byte & 15];
    }
    return out;
}

} // namespace detail

// The bytes between single quotes. A quote and a backslash stand behind a backslash, line ends and
// tabs are \n, \r and \t, every other byte outside the printable 7-bit characters is \x and two
// digits.
inline char* writeQuoted(char* out, std::string_view text) noexcept {
    *out++ = '\'';
    for (const char c : text) {
        const bool plain = c >= ' ' && c <= '~' && c != '\'' && c != '\\';
        if (plain)
            *out++ = c;
        else
            out = detail::writeEscape(out, static_cast<U8>(c));
    }
    *out++ = '\'';
    return out;
}

} // namespace Vel::Text
