// Table.h - an array of lines, found by some bits of their members' words.
//
// Shares: all members have the same bits below `start`: those are its prefix. So keys of any stride
//         lie one level deep.
// Place:  the bits from `start` on, as many as the lines need. Where that line does not exist yet,
//         half as far: linear hashing.
// Grows:  by one line: the first one that was not split since the count was last a power of two
//         gives those of its members that have the next bit to the new one. A full line may be
//         split before its turn: it says so (Line::isSplit), and they lie where they will belong
//         when the table has grown that far.
// Order:  along after(), which is arithmetic; the marks say which lines are not empty.
// Load:   counts its lines' members, and a line's seats and one more for each line that is a table
//         or a tree: above the limit it grows.
// ABI:    layout and inline code are compiled into clients: at most 64 bytes.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/detail/Marks.h>
#include <algorithm>
#include <bit>

namespace Vel::detail {

template <class Member>
struct Line;

template <class Member>
struct Table {
    U32 state; // Line's
    U32 wide;  // 2^(n+1) - 1 where 2^n <= count < 2^(n+1)
    U32 count; // of the lines, those split before their turn not counted
    U32 load;
    U32 limit;
    U8 shift;    // where the place begins in a word
    U8 start;    // the same, with the words of the fold and of the rank in a row
    bool byRank; // a word is the reversed rank, and all share the fold
    U8 room;     // there is memory for 2^room lines, and marks
    Line<Member>* lines;
    U64 prefix; // fold, and above it the word of the rank
    Marks marks;
    U32 children; // lines that are tables or trees
    U32 first;    // the first line that is not empty, or none

    [[gnu::always_inline]] U32 place(U32 word) const noexcept {
        const U32 p = (word >> shift) & wide;
        // A branch would often be guessed wrong.
        const auto exists = static_cast<U32>(static_cast<S32>(p - count) >> 31);
        return p & (wide >> 1 | exists);
    }

    inline Line<Member>& lineOf(U32 word) const noexcept;
    inline U32 placeOf(const Line<Member>& line) const noexcept;

    // Of a fold and a rank's word above it: the one that tells members apart here.
    U32 wordIn(U64 trail) const noexcept { return static_cast<U32>(byRank ? trail >> 32 : trail); }

    // The bits in which a trail differs from what all members share.
    U64 differs(U64 trail) const noexcept { return (trail ^ prefix) & ((U64{1} << start) - 1); }

    // The same of a fold, where the words are folds.
    bool belongs(U32 fold) const noexcept {
        return ((fold ^ static_cast<U32>(prefix)) & ((U32{1} << shift) - 1)) == 0;
    }

    U32 half() const noexcept { return (wide >> 1) + 1; }

    U32 capacity() const noexcept { return U32{1} << room; }

    // Whether its lines are not near anyway: who walks fetches ahead.
    bool isLarge() const noexcept { return count >= 1024; }

    // The bit that divides the next line that is split.
    unsigned splitBit() const noexcept {
        return start + static_cast<unsigned>(std::countr_zero(half()));
    }

    // Behind the last bit of its words.
    unsigned endBit() const noexcept { return byRank ? 64 : 32; }

    inline bool wasSplit(U32 p) const noexcept;

    // How many bits the members of a line share.
    unsigned depth(U32 p) const noexcept {
        return std::min(splitBit() + (wasSplit(p) ? 1 : 0), endBit());
    }

    // The line behind this one in the map's order, empty or not, or none. Looks at no memory.
    [[gnu::always_inline]] U32 after(U32 p) const noexcept {
        const U32 h = half();
        const auto bits =
            static_cast<unsigned>(__builtin_ctz(h)) + (p >= h || p < count - h ? 1 : 0);
        const U32 zeroes = ~p << (32 - bits);
        if (zeroes == 0 || p == Marks::none) return Marks::none;
        const auto ones = static_cast<unsigned>(__builtin_clz(zeroes));
        return (p & ((U32{1} << (bits - ones)) - 1)) | U32{1} << (bits - 1 - ones);
    }

    void mark(U32 p) noexcept {
        marks.set(p);
        if (first == Marks::none || hashesBelow(p, first)) first = p;
    }

    void unmark(U32 p) noexcept {
        marks.clear(p);
        if (p == first) first = marks.next(p);
    }
};

} // namespace Vel::detail
