// AddressWindow.h - which physical addresses regions may have, and where the next one fits.
//
// Invariant: an extent begins at a multiple of 4096, spans whole pages of 4096 bytes and lies
//            inside the window. This page size is part of the directory's format, whatever the
//            machine's own pages are.
#pragma once

#include <optional>
#include <pinbuf/detail/Integers.h>
#include <vector>

namespace pinbuf {

// Two of the four gigabytes that 32 bits address, clear of the low memory and of the device
// registers on top.
inline constexpr U32 windowBegin = 0x40000000;
inline constexpr U32 windowEnd = 0xc0000000;
inline constexpr U32 addressPageBytes = 4096;

// `sizeBytes` in whole pages. 64 bits wide, so that rounding up cannot wrap around.
constexpr U64 wholePages(U64 sizeBytes) {
    return (sizeBytes + (addressPageBytes - 1)) / addressPageBytes * addressPageBytes;
}

struct Extent {
    U32 address;
    U32 sizeBytes; // as asked, not rounded

    constexpr U64 end() const { return address + wholePages(sizeBytes); }

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
    std::optional<U32> firstFit(U64 sizeBytes) const;

    // The largest size in bytes for which firstFit has an answer.
    U64 largestFit() const;

private:
    struct Range {
        U64 begin;
        U64 end;
    };

    explicit FreeRanges(std::vector<Range> ranges) : ranges_(std::move(ranges)) {}

    std::vector<Range> ranges_;
};

} // namespace pinbuf
