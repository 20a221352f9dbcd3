// OrderBits.h - a set of small numbers in order: one bit a number, and one summary bit for each word of bits.
//
// Owns:   its words; up to one word of bits (64, or 32 in a 32-bit process) lies in the object itself.
// Layout: all words of bits, then their summary words, then the summaries of those, down to a single word.
// Cost:   every operation touches at most one word, or two, of each level: log(numbers) to the base of the word's
//         bits.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <bit>
#include <cstddef>
#include <utility>

namespace Vel::detail {

class VEL_API OrderBits {
public:
    using Word = std::size_t;
    static constexpr unsigned wordBits = 8 * sizeof(Word);
    static constexpr unsigned wordShift = std::countr_zero(wordBits);
    static constexpr U32 none = 0xffffffffU;

    OrderBits() noexcept = default;
    OrderBits(const OrderBits&) = delete;
    OrderBits& operator=(const OrderBits&) = delete;

    ~OrderBits() { release(); }

    // Makes the empty set of numbers below 2^bits, bits <= 31. False without memory: then it is as
    // it was.
    bool make(unsigned bits) noexcept;
    void release() noexcept;
    void swap(OrderBits& other) noexcept;

    // Whether make() was called: nothing else may be asked before.
    bool made() const noexcept { return words_ != 0; }

    // Words of bits, without the summaries.
    U32 words() const noexcept { return words_; }

    bool empty() const noexcept { return data()[total_ - 1] == 0; }

    bool has(U32 number) const noexcept {
        return (data()[number >> wordShift] >> (number % wordBits) & 1) != 0;
    }

    void set(U32 number) noexcept {
        const U32 word = number >> wordShift;
        Word& bits = data()[word];
        if (std::exchange(bits, bits | Word{1} << (number % wordBits)) == 0) wordFilled(word);
    }

    void clear(U32 number) noexcept {
        const U32 word = number >> wordShift;
        Word& bits = data()[word];
        bits &= ~(Word{1} << (number % wordBits));
        if (bits == 0) wordEmptied(word);
    }

    // One word of bits: those of the numbers from word * wordBits on; 0 behind the last.
    Word bitsIn(U32 word) const noexcept { return word < words_ ? data()[word] : 0; }

    // The least number of the set that is not below `number`, or none.
    U32 next(U32 number) const noexcept {
        const U32 word = number >> wordShift;
        if (word >= words_) return none;
        const Word rest = data()[word] >> (number % wordBits);
        if (rest != 0) return number + static_cast<U32>(std::countr_zero(rest));
        return nextWord(word + 1);
    }

    std::size_t heapBytes() const noexcept { return total_ > 1 ? total_ * sizeof(Word) : 0; }

    // Moves one word of bits into a set of twice the numbers: n becomes 2n.
    void widenWord(U32 word, OrderBits& wider) noexcept;

    // Summary bits that say otherwise than the words below them.
    unsigned auditErrors() const noexcept;

private:
    const Word* data() const noexcept { return total_ == 1 ? &only_ : memory_; }

    Word* data() noexcept { return total_ == 1 ? &only_ : memory_; }

    static U32 summaryWords(U32 words) noexcept { return (words + wordBits - 1) >> wordShift; }

    U32 nextWord(U32 word) const noexcept;
    // Tells the summaries.
    void wordFilled(U32 word) noexcept;
    void wordEmptied(U32 word) noexcept;

    union {
        Word only_ = 0;
        Word* memory_;
    };

    U32 words_ = 0;
    U32 total_ = 0;
};

} // namespace Vel::detail
