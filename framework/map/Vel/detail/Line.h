// Line.h - what a map is made of: one line of the cache that seats members, or leads to more lines.
//
//     SEATS  [state | word x5 | member x5]     up to five members (seven of 32 bits), in no order
//     TABLE  [state | the fields of Table.h]   an array of lines, found by some bits of the word
//     TREE   [state | Tree*]                   members of one fold whose keys have no rank
//
// State: a bit for each seat that is taken, and what the line is. A line of zeroes is empty.
// Word:  the 32 bits that tell a member from its neighbours: the fold of its key, or, in a table of
//        members that share the whole fold, its rank with the bits reversed. Both order like
//        hashes: the lowest bit that differs decides.
// Seats: nobody moves when another comes or goes. Who needs the order reads it from the words.
// ABI:   layout and inline code are compiled into clients: 64 bytes. In an array they are aligned
//        to 64, alone as pointers are.
// Test:  LineMap_test.cpp.
#pragma once

#include <Vel/Integers.h>
#include <Vel/detail/Table.h>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
    #include <emmintrin.h>
#endif

namespace Vel::detail {

struct Tree;

template <class Member>
struct Seats {
    static constexpr U32 all = sizeof(Member) == 8 ? 5 : 7;
    U32 state;
    U32 word[all];
    Member member[all]; // an object's address, or a number
};

struct TreeSeat {
    U32 state;
    Tree* tree;
};

// Member: U32 for numbers, std::uintptr_t for addresses.
template <class Member>
struct Line {
    static constexpr U32 seats = Seats<Member>::all;
    static constexpr U32 everySeat = (1U << seats) - 1;
    static constexpr U32 isTable = 1U << 16;
    static constexpr U32 isTree = 1U << 17;
    static constexpr U32 isSplit = 1U << 18; // of a table's line: see there

    union {
        Seats<Member> at;
        Table<Member> table;
        TreeSeat leaf;
        unsigned char bytes[64];
    };

    bool is(U32 what) const noexcept { return (at.state & what) != 0; }

    bool isEmpty() const noexcept { return (at.state & ~isSplit) == 0; }

    bool isFull() const noexcept { return (~at.state & everySeat) == 0; }

    // A bit for each seat that is taken.
    U32 taken() const noexcept { return at.state & everySeat; }

    U32 count() const noexcept { return static_cast<U32>(std::popcount(taken())); }

    // A bit for each seat whose word has these bits under the mask; of a table or a tree, none.
    [[gnu::always_inline]] U32 having(U32 bits, U32 mask) const noexcept {
#ifdef __SSE2__
        const __m128i asked = _mm_set1_epi32(static_cast<int>(bits));
        const __m128i masks = _mm_set1_epi32(static_cast<int>(mask));
        const __m128i first = _mm_cmpeq_epi32(_mm_and_si128(firstWords(), masks), asked);
        const __m128i more = _mm_cmpeq_epi32(_mm_and_si128(moreWords(), masks), asked);
        const __m128i all = _mm_packs_epi16(_mm_packs_epi32(first, more), _mm_setzero_si128());
        return static_cast<U32>(_mm_movemask_epi8(all)) & at.state;
#else
        U32 found = 0;
        for (U32 s = 0; s < seats; ++s) found |= ((at.word[s] & mask) == bits ? 1U : 0U) << s;
        return found & at.state;
#endif
    }

    // A bit for each seat with this word.
    [[gnu::always_inline]] U32 same(U32 word) const noexcept { return having(word, ~U32{0}); }

    // Of a set that is not empty: std::countr_zero() would ask, and what it gives back would be
    // guessed.
    static U32 first(U32 set) noexcept { return static_cast<U32>(__builtin_ctz(set)); }

    // Takes a free seat; there is one.
    [[gnu::always_inline]] void seat(U32 word, Member member) noexcept {
        const U32 free = first(~at.state);
        at.word[free] = word;
        at.member[free] = member;
        at.state |= 1U << free;
    }

    // Those whose word has the bit go to an empty line.
    [[gnu::always_inline]] void divide(U32 bit, Line& to) noexcept {
        const U32 going = having(bit, bit);
        std::memcpy(static_cast<void*>(&to), this, sizeof to);
        to.at.state = going;
        at.state &= ~going;
    }

    // Becomes what another line is, and stays split if it is.
    void become(const Line& other) noexcept {
        const U32 flag = at.state & isSplit;
        std::memcpy(static_cast<void*>(this), &other, sizeof other);
        at.state |= flag;
    }

private:
#ifdef __SSE2__
    __m128i firstWords() const noexcept {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at.word));
    }

    // The others, and what lies behind them: the state knows no such seats.
    __m128i moreWords() const noexcept {
        const char* const from = reinterpret_cast<const char*>(this) + 5 * sizeof(U32);
        if constexpr (seats == 5)
            return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
        else
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
#endif
};

static_assert(sizeof(Line<std::uintptr_t>) == 64 && sizeof(Line<U32>) == 64);

template <class Member>
[[gnu::always_inline]] inline Line<Member>& Table<Member>::lineOf(U32 word) const noexcept {
    Line<Member>* line = &lines[place(word)];
    if (line->is(Line<Member>::isSplit)) [[unlikely]]
        line += (word >> shift) & half();
    return *line;
}

template <class Member>
bool Table<Member>::wasSplit(U32 p) const noexcept {
    return p >= half() || p < count - half() || lines[p].is(Line<Member>::isSplit);
}

template <class Member>
U32 Table<Member>::placeOf(const Line<Member>& line) const noexcept {
    return static_cast<U32>(&line - lines);
}

} // namespace Vel::detail
