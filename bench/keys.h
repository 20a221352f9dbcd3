// keys.h - keys without a pattern, for every benchmark of maps and tables. Not installed.
#pragma once

#include <Vel/Integers.h>

namespace Bench {

// Another key for each number. Multiples of one odd number would not do: they fill a power of two
// of buckets evenly.
constexpr Vel::U32 scattered(Vel::U32 number) {
    number = (number ^ number >> 16) * 0x85EBCA6BU;
    number = (number ^ number >> 13) * 0xC2B2AE35U;
    return number ^ number >> 16;
}

} // namespace Bench
