// AddressWindow.h - which physical addresses regions may have, and where the next one fits.
//
// Invariant: an extent begins at a multiple of 4096, spans whole pages of 4096 bytes and lies
//            inside the window. This page size is part of the directory's format, whatever the
//            machine's own pages are.
#ifndef PINBUF_DETAIL_ADDRESS_WINDOW_H
#define PINBUF_DETAIL_ADDRESS_WINDOW_H

#include <cstdint>
#include <optional>
#include <vector>

namespace pinbuf {

// Two of the four gigabytes that 32 bits address, clear of the low memory and of the device
// registers on top.
inline constexpr std::uint32_t windowBegin = 0x40000000;
inline constexpr std::uint32_t windowEnd = 0xc0000000;
inline constexpr std::uint32_t addressPageBytes = 4096;

// `sizeBytes` in whole pages. 64 bits wide, so that rounding up cannot wrap around.
constexpr std::uint64_t wholePages(std::uint64_t sizeBytes) {
    return (sizeBytes + (addressPageBytes - 1)) / addressPageBytes * addressPageBytes;
}

struct Extent {
    std::uint32_t address;
    std::uint32_t sizeBytes; // as asked, not rounded

    constexpr std::uint64_t end() const { return address + wholePages(sizeBytes); }

    // Page aligned, not empty, inside the window.
    constexpr bool isPossible() const {
        return address >= windowBegin && address % addressPageBytes == 0 && sizeBytes > 0 &&
               end() <= windowEnd;
    }
};

// Whether no two of the extents, which are in ascending order, share a page. O(n).
bool areDisjoint(const std::vector<Extent>& extents);

// The lowest address at which `sizeBytes` fit between `taken`, which is in ascending order and
// disjoint. O(n).
std::optional<std::uint32_t> firstFit(const std::vector<Extent>& taken, std::uint64_t sizeBytes);

// The largest size in bytes for which firstFit has an answer.
std::uint64_t largestFit(const std::vector<Extent>& taken);

} // namespace pinbuf

#endif // PINBUF_DETAIL_ADDRESS_WINDOW_H
