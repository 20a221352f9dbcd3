// Integers.h - integers whose width is part of a format: a region, a log, a hash or a text form.
//
// Test: none; names of types.
#pragma once

#include <cstdint>

namespace Vel {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = unsigned long long;
using S32 = std::int32_t;
using S64 = long long;

// Bytes in place, of a length that the function says; borrowed, never owned.
using BytePtr = unsigned char*;

static_assert(sizeof(U64) == 8 && sizeof(S64) == 8);

} // namespace Vel
