// BitSet.h - a fixed set of flag bits in one unsigned word.
//
// Ranges: positions 0 to bits - 1, from the least significant bit on. Any other position is a fatal
//         assertion.
// Cost:   one word, every operation inline; no memory.
#pragma once

#include <Vel/Assert.h>
#include <concepts>
#include <limits>

namespace Vel {

template <int bits, std::unsigned_integral Word>
class BitSet {
    static_assert(bits > 0 && bits <= std::numeric_limits<Word>::digits);

public:
    constexpr BitSet() noexcept = default;

    // The bits of `word`; what it has beyond the last position is kept and never read.
    constexpr explicit BitSet(Word word) noexcept : word_(word) {}

    constexpr Word word() const noexcept { return word_; }

    void set(int pos) noexcept { word_ |= maskAt(pos); }

    void reset(int pos) noexcept { word_ &= static_cast<Word>(~maskAt(pos)); }

    void is(int pos, bool value) noexcept { value ? set(pos) : reset(pos); }

    bool test(int pos) const noexcept { return (word_ & maskAt(pos)) != 0; }

    constexpr bool operator==(const BitSet&) const noexcept = default;

private:
    static Word maskAt(int pos) noexcept {
        VEL_ASSERT_AS("pos>=0 && pos<bits", pos >= 0 && pos < bits, pos);
        return static_cast<Word>(Word{1} << pos);
    }

    Word word_ = 0;
};

} // namespace Vel
