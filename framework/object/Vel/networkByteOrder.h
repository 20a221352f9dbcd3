// networkByteOrder.h - integers in network byte order (highest byte first), at any address.
#pragma once

#include <Vel/Integers.h>
#include <bit>
#include <concepts>
#include <cstring>

namespace Vel {

// The value with its bytes in the opposite order where the host's order is not the network's: turns
// the one into the other, both ways.
template <std::unsigned_integral T>
constexpr T networkOrdered(T value) noexcept {
    static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    if constexpr (std::endian::native == std::endian::big || sizeof(T) == 1)
        return value;
    else if constexpr (sizeof(T) == 2)
        return __builtin_bswap16(value);
    else if constexpr (sizeof(T) == 4)
        return __builtin_bswap32(value);
    else
        return __builtin_bswap64(value);
}

// Writes sizeof(T) bytes.
template <std::unsigned_integral T>
void storeNetworkOrdered(U8* to, T value) noexcept {
    const T ordered = networkOrdered(value);
    std::memcpy(to, &ordered, sizeof ordered);
}

// Reads sizeof(T) bytes.
template <std::unsigned_integral T>
T loadNetworkOrdered(const U8* from) noexcept {
    T ordered;
    std::memcpy(&ordered, from, sizeof ordered);
    return networkOrdered(ordered);
}

} // namespace Vel
