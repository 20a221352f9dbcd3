// ZeroedMemory.h - zeroed arrays that grow without being copied when they are large.
//
// Large:  from 64 KiB on an array is mapped pages: made without touching them, grown by moving the
//         mapping, not the bytes. No call takes time that grows with the array. From 4 MiB on it is
//         large pages where the kernel has them.
// Align:  64 bytes, a line of the cache.
// Errors: null when there is no memory, and the old array stays as it is. Nothing throws.
#pragma once

#include <Vel/Export.h>
#include <cstddef>

namespace Vel::detail {

VEL_API void* zeroedMemory(std::size_t bytes) noexcept;
// The array with its contents, followed by zeroes. `newBytes` > `bytes`.
VEL_API void* zeroedMemoryGrown(void* array, std::size_t bytes, std::size_t newBytes) noexcept;
// Null is no array.
VEL_API void zeroedMemoryDel(void* array, std::size_t bytes) noexcept;

} // namespace Vel::detail
