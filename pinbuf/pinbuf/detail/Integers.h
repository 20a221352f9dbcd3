// Integers.h - integers whose width is part of a file's format.
#pragma once

#include <cstdint>

namespace pinbuf {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

} // namespace pinbuf
