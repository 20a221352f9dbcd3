// byteMix.h - the one-at-a-time hash: one byte after another, then a final avalanche. All
// arithmetic modulo 2^32.
//
// Source: Bob Jenkins, "A Hash Function for Hash Table Lookup", Dr. Dobb's Journal, September 1997.
// Use:    numbers are fed least significant byte first, so that every machine and word size agrees.
#pragma once

#include <Vel/Integers.h>
#include <concepts>

namespace Vel {

class ByteMix {
public:
    constexpr void add(U8 byte) noexcept {
        hash_ += byte;
        hash_ += hash_ << 10;
        hash_ ^= hash_ >> 6;
    }

    // The bytes of a number, least significant first.
    template <std::unsigned_integral T>
        requires(sizeof(T) > 1)

    constexpr void add(T number) noexcept {
        for (unsigned i = 0; i < sizeof(T); ++i) add(static_cast<U8>(number >> (8 * i)));
    }

    constexpr U32 value() const noexcept {
        U32 hash = hash_;
        hash += hash << 3;
        hash ^= hash >> 11;
        hash += hash << 15;
        return hash;
    }

private:
    U32 hash_ = 0;
};

} // namespace Vel
