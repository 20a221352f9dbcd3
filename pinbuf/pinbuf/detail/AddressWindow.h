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

// The parts of the window that no extent takes.
//
// Invariant: the ranges are in ascending order, none is empty, and between two of them lies an
//            extent.
// Cost:      O(log n) to find a range and O(n) short steps to change or search them, for n ranges:
//            regions that were made one after another leave few.
class FreeRanges {
public:
    // All of the window is free.
    FreeRanges();

    // All but the extents, which are possible and in ascending order; empty when two share a page.
    static std::optional<FreeRanges> around(const std::vector<Extent>& extents);

    // Takes a possible extent; false, and takes nothing, when a page of it is taken.
    bool take(const Extent& extent);

    // Gives an extent back that was taken.
    void giveBack(const Extent& extent);

    // The lowest address at which `sizeBytes` fit.
    std::optional<std::uint32_t> firstFit(std::uint64_t sizeBytes) const;

    // The largest size in bytes for which firstFit has an answer.
    std::uint64_t largestFit() const;

private:
    struct Range {
        std::uint64_t begin;
        std::uint64_t end;
    };

    explicit FreeRanges(std::vector<Range> ranges) : ranges_(std::move(ranges)) {}

    std::vector<Range> ranges_;
};

} // namespace pinbuf

#endif // PINBUF_DETAIL_ADDRESS_WINDOW_H
