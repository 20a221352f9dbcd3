// Marks.h - a set of numbers in the order of their reversed bits, as many as come.
//
// Order:  of the lowest bit in which two numbers differ, like that of a map's hashes.
// Layout: a tree of 16-bit words, level by level in one array. The word of n on a level is named by
//         n's low digits, as many as there are levels above, and has one bit for each value of n's
//         next digit, so that no number moves when another level comes. A word of zeroes below a
//         set bit: of that digit only the number without further digits is here.
// Owns:   the words, from the second level on; up to four words lie in the object itself. Copied
//         like a plain struct: whoever has the last copy says release(). All zeroes are the empty
//         set of numbers below 16.
// Cost:   every operation touches one word of the last level; where that was empty or becomes so,
//         one more of each level above.
// ABI:    layout and inline code are compiled into clients.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <bit>
#include <cstddef>
#include <utility>

namespace Vel::detail {

class VEL_API Marks {
public:
    static constexpr U32 none = ~U32{0}; // no number

    // Makes room for numbers below `count`, at most 2^31. False without memory: then nothing has
    // changed.
    bool reach(U32 count) noexcept;
    void release() noexcept;

    bool empty() const noexcept { return words()[0] == 0; }

    bool has(U32 n) const noexcept {
        unsigned l = level_;
        while (l != 0 && at(l, n) == 0 && (n >> digitBits * l) % wordBits == 0) --l;
        return (at(l, n) & bit(l, n)) != 0;
    }

    // False if it was here already.
    bool set(U32 n) noexcept {
        Word& word = at(level_, n);
        const Word old = std::exchange(word, static_cast<Word>(word | bit(level_, n)));
        if (old == 0) setAbove(n);
        return old != word;
    }

    // Precondition: has(n).
    void clear(U32 n) noexcept {
        Word& word = at(level_, n);
        word = static_cast<Word>(word & ~bit(level_, n));
        if (word == 0) clearAbove(n);
    }

    U32 first() const noexcept { return empty() ? none : firstBelow(0, 0, words()[0]); }

    // The first behind n, whether n is here or not; or none.
    U32 next(U32 n) const noexcept {
        for (unsigned l = level_;; --l) {
            const auto rest = static_cast<Word>(at(l, n) & ~(2 * bit(l, n) - 1));
            if (rest != 0) return firstBelow(l, n & low(l), rest);
            if (l == 0) return none;
        }
    }

    [[gnu::always_inline]] void fetch(U32 n) const noexcept {
        __builtin_prefetch(&at(level_, n), 1);
    }

    std::size_t heapBytes() const noexcept {
        return level_ != 0 ? wordsAbove(level_ + 1) * sizeof(Word) : 0;
    }

private:
    using Word = U16;
    static constexpr unsigned digitBits = 4;
    static constexpr unsigned wordBits = 1U << digitBits;

    // Words of the levels above this one: 1 + 16 + 256 ...
    static constexpr std::size_t wordsAbove(unsigned level) noexcept {
        return low(level) & 0x11111111;
    }

    static constexpr U32 low(unsigned level) noexcept {
        return static_cast<U32>((U64{1} << digitBits * level) - 1);
    }

    // A digit's value with its bits reversed: its place in a word.
    static constexpr U8 reversed[wordBits] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};

    static Word bit(unsigned level, U32 n) noexcept {
        return static_cast<Word>(1U << reversed[(n >> digitBits * level) % wordBits]);
    }

    const Word* words() const noexcept { return level_ != 0 ? words_ : &only_; }

    Word* words() noexcept { return level_ != 0 ? words_ : &only_; }

    const Word& at(unsigned level, U32 n) const noexcept {
        return words()[wordsAbove(level) + (n & low(level))];
    }

    Word& at(unsigned level, U32 n) noexcept {
        return words()[wordsAbove(level) + (n & low(level))];
    }

    // The number's word on the last level has become what it was not: not empty, or empty.
    void setAbove(U32 n) noexcept;
    void clearAbove(U32 n) noexcept;

    // The first number with these low digits and one of the next digits in `rest`.
    U32 firstBelow(unsigned level, U32 digits, U32 rest) const noexcept {
        for (;; ++level) {
            digits |= U32{reversed[std::countr_zero(rest)]} << digitBits * level;
            if (level == level_) return digits;
            rest = at(level + 1, digits);
            if (rest == 0) return digits;
        }
    }

    union {
        Word only_;
        Word* words_;
    };

    U32 level_; // the last one
};

} // namespace Vel::detail
