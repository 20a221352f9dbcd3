// BucketOrder.h - which buckets of a table are occupied, in the map's order, while the number of buckets grows.
//
// Position:   a bucket is named by its place, bit-reversed to 32 bits: positions ascend in the map's order, and a
//             position means the same at every number of buckets.
// Resolution: the first `bits` bits of a position have a bit each. Splitting every bucket once asks for one bit more;
//             the words of bits move into the wider set a few at a time, in step with the splits.
#pragma once

#include <Vel/Integers.h>
#include <Vel/detail/OrderBits.h>
#include <algorithm>
#include <utility>

namespace Vel::detail {

class BucketOrder {
public:
    // Empty, for `count` >= 1 buckets. False without memory: then it is as it was.
    bool make(U32 count) noexcept {
        const unsigned depth = static_cast<unsigned>(std::bit_width(count)) - 1;
        OrderBits bits;
        OrderBits wider;
        if (!bits.make(depth + 1)) return false;
        const U32 split = count - (U32{1} << depth);
        if (split != 0 && !wider.make(depth + 2)) return false;
        bits_.swap(bits);
        wider_.swap(wider);
        resolution_ = depth + 1;
        moved_ = movedAfter(split);
        return true;
    }

    void swap(BucketOrder& other) noexcept {
        bits_.swap(other.bits_);
        wider_.swap(other.wider_);
        std::swap(moved_, other.moved_);
        std::swap(resolution_, other.resolution_);
    }

    bool empty() const noexcept { return bits_.empty() && (!wider_.made() || wider_.empty()); }

    bool has(U32 position) const noexcept {
        const U32 number = numberOf(position);
        return isMoved(number) ? wider_.has(widerNumberOf(position)) : bits_.has(number);
    }

    void set(U32 position) noexcept {
        const U32 number = numberOf(position);
        if (isMoved(number))
            wider_.set(widerNumberOf(position));
        else
            bits_.set(number);
    }

    void clear(U32 position) noexcept {
        const U32 number = numberOf(position);
        if (isMoved(number))
            wider_.clear(widerNumberOf(position));
        else
            bits_.clear(number);
    }

    // The first occupied bucket; false when all are empty.
    bool first(U32& position) const noexcept { return seek(isMoved(0), 0, 0, position); }

    // The first occupied bucket behind the one that covers `position`; false when there is none.
    bool after(U32& position) const noexcept {
        const U32 number = numberOf(position);
        return seek(isMoved(number), number + 1, widerNumberOf(position) + 1, position);
    }

    // Occupied buckets that follow each other, as far as one word of bits tells.
    class Run {
    public:
        bool empty() const noexcept { return bits_ == 0; }

        // The position of the next one; there is one.
        U32 next() noexcept {
            const auto bit = static_cast<U32>(std::countr_zero(bits_));
            bits_ &= bits_ - 1;
            return (first_ + bit) << unused_;
        }

    private:
        friend class BucketOrder;

        OrderBits::Word bits_ = 0;
        U32 first_ = 0; // number of the word's lowest bit
        unsigned unused_ = 0;
    };

    // Those behind the one that covers `position`.
    Run behind(U32 position) const noexcept {
        const bool moved = isMoved(numberOf(position));
        const U32 number = moved ? widerNumberOf(position) : numberOf(position);
        const OrderBits& bits = moved ? wider_ : bits_;
        Run run;
        run.bits_ = bits.bitsIn(number >> OrderBits::wordShift) &
                    ~OrderBits::Word{1} << (number % OrderBits::wordBits);
        run.first_ = number & ~(OrderBits::wordBits - 1);
        run.unused_ = moved ? 31 - resolution_ : 32 - resolution_;
        return run;
    }

    // Before a bucket is split: makes room at the start of a round, and moves what is due.
    // `split` buckets of this round are split already. False without memory.
    bool prepareSplit(U32 split) noexcept {
        if (!wider_.made() && !wider_.make(resolution_ + 1)) return false;
        for (const U32 due = movedAfter(split + 1); moved_ < due; ++moved_)
            bits_.widenWord(moved_, wider_);
        return true;
    }

    // Every bucket of the round is split.
    void roundDone() noexcept {
        bits_.swap(wider_);
        wider_.release();
        ++resolution_;
        moved_ = 0;
    }

    std::size_t heapBytes() const noexcept { return bits_.heapBytes() + wider_.heapBytes(); }

    unsigned auditErrors() const noexcept {
        return bits_.auditErrors() + (wider_.made() ? wider_.auditErrors() : 0);
    }

private:
    // A round splits half as many buckets as there are bits, so a word is due each half word.
    U32 movedAfter(U32 split) const noexcept {
        constexpr U32 pace = OrderBits::wordBits / 2;
        return std::min(bits_.words(), (split + pace - 1) / pace);
    }

    U32 numberOf(U32 position) const noexcept { return position >> (32 - resolution_); }

    U32 widerNumberOf(U32 position) const noexcept { return position >> (31 - resolution_); }

    bool isMoved(U32 number) const noexcept { return number >> OrderBits::wordShift < moved_; }

    bool seek(bool moved, U32 number, U32 widerNumber, U32& position) const noexcept {
        if (moved) {
            const U32 found = wider_.next(widerNumber);
            if (found != OrderBits::none) {
                position = found << (31 - resolution_);
                return true;
            }
            number = moved_ << OrderBits::wordShift;
        }
        const U32 found = bits_.next(number);
        position = found << (32 - resolution_);
        return found != OrderBits::none;
    }

    OrderBits bits_;
    OrderBits wider_;
    U32 moved_ = 0;
    unsigned resolution_ = 0;
};

} // namespace Vel::detail
