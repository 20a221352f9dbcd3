// textWriting.h - how a number, a truth value and a string are written, into a buffer of the
// caller.
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
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

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

namespace detail {

inline constexpr auto digitPairs = [] {
    std::array<char, 200> pairs{};
    for (unsigned i = 0; i < 100; ++i) {
        pairs[std::size_t{2} * i] = static_cast<char>('0' + i / 10);
        pairs[std::size_t{2} * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

inline void writePair(char* out, U32 pair) noexcept {
    std::memcpy(out, &digitPairs[std::size_t{2} * pair], 2);
}

// Exactly four digits.
inline void writeFour(char* out, U32 value) noexcept {
    writePair(out, value / 100);
    writePair(out + 2, value % 100);
}

// Exactly eight.
inline char* writeEight(char* out, U32 value) noexcept {
    writeFour(out, value / 10000);
    writeFour(out + 4, value % 10000);
    return out + 8;
}

// By the number of significant bits: added to a number that has so many, bit 32 and up are the
// number of its digits.
inline constexpr auto digitCounts = [] {
    std::array<U64, 33> counts{};
    U64 power = 10; // the least number with one digit more
    U64 digits = 1;
    for (unsigned bits = 0; bits <= 32; ++bits) {
        const U64 most = (U64{1} << bits) - 1;
        counts[bits] = most < power ? digits << 32 : ((digits + 1) << 32) - power;
        if (most >= power) {
            power *= 10;
            ++digits;
        }
    }
    return counts;
}();

constexpr U32 digitCount(U32 value) noexcept {
    return static_cast<U32>((digitCounts[static_cast<unsigned>(std::bit_width(value))] + value) >>
                            32);
}

struct Split {
    U64 above; // the number without its last eight digits
    U32 below; // these
};

inline Split splitEight(U64 value) noexcept {
    constexpr U32 unit = 100000000;
#ifdef __i386__ // where the compiler would call a function for each of the two results
    U32 low = static_cast<U32>(value);
    const U32 high = static_cast<U32>(value >> 32);
    U32 rest = high % unit;
    asm("divl %[by]" : "+a"(low), "+d"(rest) : [by] "r"(unit) : "cc");
    return {U64{high / unit} << 32 | low, rest};
#else
    return {value / unit, static_cast<U32>(value % unit)};
#endif
}

} // namespace detail

// Decimal digits; no sign unless negative, no leading zeros.
inline char* writeNumber(char* out, U32 value) noexcept {
    char* const end = out + detail::digitCount(value);
    char* at = end;
    while (value >= 10000) detail::writeFour(at -= 4, std::exchange(value, value / 10000) % 10000);
    if (value >= 100) detail::writePair(at -= 2, std::exchange(value, value / 100) % 100);
    if (value >= 10)
        detail::writePair(at - 2, value);
    else
        at[-1] = static_cast<char>('0' + value);
    return end;
}

inline char* writeNumber(char* out, U64 value) noexcept {
    if (const U32 narrow = static_cast<U32>(value); narrow == value)
        return writeNumber(out, narrow);
    const detail::Split last = detail::splitEight(value);
    if (const U32 narrow = static_cast<U32>(last.above); narrow == last.above)
        return detail::writeEight(writeNumber(out, narrow), last.below);
    const detail::Split middle = detail::splitEight(last.above);
    out = detail::writeEight(writeNumber(out, static_cast<U32>(middle.above)), middle.below);
    return detail::writeEight(out, last.below);
}

inline char* writeNumber(char* out, S64 value) noexcept {
    if (value >= 0) return writeNumber(out, static_cast<U64>(value));
    *out++ = '-';
    return writeNumber(out, 0 - static_cast<U64>(value)); // modulo 2^64: right for -2^63 too
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
