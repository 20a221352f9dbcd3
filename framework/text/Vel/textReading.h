// textReading.h - how a number, a truth value and a string are recognised in a text.
//
// The building blocks of the readers (sequenceToValue.h): they skip no blanks, allocate nothing and
// throw nothing. `pos` moves behind what was read, and only when something was read.
//
// Range: no function looks at `end` or behind it.
// Form:  docs/text-form.md.
#pragma once

#include <Vel/Integers.h>
#include <limits>
#include <string_view>

namespace Vel::Text {

// Blank, tab and the two line ends separate tokens.
constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Whether `c` can stand inside a word, so that a word cannot end before it.
constexpr bool isWordCharacter(char c) noexcept {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

// 0 to 15; 16 for anything that is no hexadecimal digit.
constexpr unsigned hexDigitValue(char c) noexcept {
    if (isDigit(c)) return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
    return 16;
}

constexpr const char* skipBlanks(const char* pos, const char* end) noexcept {
    while (pos != end && isBlank(*pos)) ++pos;
    return pos;
}

enum class Number : U8 {
    read,
    absent,     // no digit where one must stand
    outOfRange, // too large for the type; `pos` stands behind the digits all the same
};

namespace detail {

// All digits of one base; at least one. 10 and 16 are the bases. A template, so that the base is a
// constant where the digits are counted.
template <unsigned base>
constexpr Number readDigits(const char*& pos, const char* end, U64& value) noexcept {
    const char* p = pos;
    U64 sum = 0;
    bool fits = true;
    for (; p != end; ++p) {
        const unsigned digit = hexDigitValue(*p);
        if (digit >= base) break;
        constexpr U64 largest = std::numeric_limits<U64>::max();
        if (sum > largest / base || sum * base > largest - digit) fits = false;
        sum = sum * base + digit; // modulo 2^64 once it does not fit
    }
    if (p == pos) return Number::absent;
    pos = p;
    if (!fits) return Number::outOfRange;
    value = sum;
    return Number::read;
}

// Decimal digits that surely fit 32 bits are the usual case.
constexpr Number readDecimal(const char*& pos, const char* end, U64& value) noexcept {
    const char* p = pos;
    U32 sum = 0;
    const char* const limit = end - p > 9 ? p + 9 : end; // 999999999 < 2^32
    while (p != limit && isDigit(*p)) sum = sum * 10 + static_cast<U32>(*p++ - '0');
    if (p == pos) return Number::absent;
    if (p != end && isDigit(*p)) return readDigits<10>(pos, end, value);
    pos = p;
    value = sum;
    return Number::read;
}

// Digits with or without the prefix 0x, without a sign.
constexpr Number readMagnitude(const char*& pos, const char* end, U64& value) noexcept {
    const bool hexadecimal = end - pos >= 2 && pos[0] == '0' && (pos[1] == 'x' || pos[1] == 'X');
    if (!hexadecimal) return readDecimal(pos, end, value);
    const char* p = pos + 2;
    const Number result = readDigits<16>(p, end, value);
    if (result != Number::absent) pos = p;
    return result;
}

} // namespace detail

// [+] (digits | 0x hexadecimal digits), 0 to 2^64 - 1. A minus is no part of it, not even before 0.
constexpr Number readNumber(const char*& pos, const char* end, U64& value) noexcept {
    const char* p = pos;
    if (p != end && *p == '+') ++p;
    const Number result = detail::readMagnitude(p, end, value);
    if (result != Number::absent) pos = p;
    return result;
}

// [+|-] (digits | 0x hexadecimal digits), -2^63 to 2^63 - 1.
constexpr Number readNumber(const char*& pos, const char* end, S64& value) noexcept {
    const char* p = pos;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '+' || *p == '-')) ++p;
    U64 magnitude = 0;
    const Number result = detail::readMagnitude(p, end, magnitude);
    if (result == Number::absent) return result;
    pos = p;
    constexpr U64 largest = std::numeric_limits<S64>::max();
    if (result == Number::outOfRange || magnitude > largest + (negative ? 1 : 0))
        return Number::outOfRange;
    value = static_cast<S64>(negative ? 0 - magnitude : magnitude);
    return Number::read;
}

// True, False, true or false, as a whole word. Says whether there was one.
constexpr bool readTruth(const char*& pos, const char* end, bool& value) noexcept {
    const std::string_view text(pos, static_cast<std::size_t>(end - pos));
    std::size_t length = 0;
    if (text.starts_with("True") || text.starts_with("true")) length = 4;
    if (text.starts_with("False") || text.starts_with("false")) length = 5;
    if (length == 0 || (length < text.size() && isWordCharacter(text[length]))) return false;
    value = length == 4;
    pos += length;
    return true;
}

// A string in single or double quotes that has no backslash in it: `value` lies in the text itself.
// Says whether there was one; a string with escapes is for sequenceToValue to read.
constexpr bool readPlainQuoted(const char*& pos, const char* end,
                               std::string_view& value) noexcept {
    if (pos == end || (*pos != '\'' && *pos != '"')) return false;
    const char* p = pos + 1;
    while (p != end && *p != *pos && *p != '\\') ++p;
    if (p == end || *p == '\\') return false;
    value = {pos + 1, static_cast<std::size_t>(p - pos - 1)};
    pos = p + 1;
    return true;
}

} // namespace Vel::Text
