// bitReverse.h - bit 0 becomes bit 31, bit 1 becomes bit 30, and so on.
#pragma once

#include <Vel/Integers.h>

namespace Vel {

// Reverses the 32 bits of a word: swaps neighbours, pairs, nibbles, then the bytes. Its own
// inverse.
[[gnu::always_inline]] constexpr U32 bitReverse(U32 word) noexcept {
    word = ((word & 0x55555555U) << 1) | ((word >> 1) & 0x55555555U);
    word = ((word & 0x33333333U) << 2) | ((word >> 2) & 0x33333333U);
    word = ((word & 0x0f0f0f0fU) << 4) | ((word >> 4) & 0x0f0f0f0fU);
    return __builtin_bswap32(word);
}

} // namespace Vel
