// Assert.h - broken invariants end the process, in every build type, and say which and where.
//
//     VEL_ASSERT(offset < size(), index, offset);
//     // Table.cpp:88: assertion failed: offset < size(); index = 40, offset = 4008
//     //     (in unsigned char* Net::Table::slot(Vel::U32) const)      - all on one line
//
// Text:   the asserted expression as written, then the named values, then the function as the
//         compiler spells it. VEL_ASSERT_AS states the text itself, for texts that others rely on:
//         a formatter may respell an expression.
// Cost:   one predicted branch; the values are looked at only when the assertion fails.
// Errors: writes one line to standard error and aborts. Allocates nothing, so it works in any
//         state.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <concepts>
#include <initializer_list>
#include <type_traits>

namespace Vel::detail {

// One value that explains a failed assertion: an integer, a truth value, a character string or a
// pointer.
class AssertedValue {
public:
    template <std::integral T>
    constexpr AssertedValue(T value) noexcept
        : kind_(std::same_as<T, bool>     ? Kind::boolean
                : std::signed_integral<T> ? Kind::signedInteger
                                          : Kind::unsignedInteger),
          bits_(static_cast<U64>(value)) {}

    constexpr AssertedValue(const char* text) noexcept : kind_(Kind::text), text_(text) {}

    constexpr AssertedValue(const void* address) noexcept
        : kind_(Kind::pointer), address_(address) {}

private:
    friend class AssertionLine;
    enum class Kind : U8 { boolean, signedInteger, unsignedInteger, text, pointer };

    Kind kind_;

    union {
        U64 bits_;
        const char* text_;
        const void* address_;
    };
};

// Prints the line and aborts. `names` are the values' expressions as written, separated by commas.
[[noreturn]] VEL_API void assertionFailed(const char* text, const char* file, int line,
                                          const char* function, const char* names,
                                          std::initializer_list<AssertedValue> values) noexcept;

} // namespace Vel::detail

#define VEL_ASSERT(condition, ...) VEL_ASSERT_AS(#condition, condition __VA_OPT__(, ) __VA_ARGS__)

#define VEL_ASSERT_AS(text, condition, ...)                                                        \
    (static_cast<bool>(condition)                                                                  \
         ? static_cast<void>(0)                                                                    \
         : ::Vel::detail::assertionFailed(text, __FILE_NAME__, __LINE__, __PRETTY_FUNCTION__,      \
                                          #__VA_ARGS__, {__VA_ARGS__}))
