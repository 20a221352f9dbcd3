// IndexSet.h - a set of indexes below a limit, in the order of a map of them: one bit each.
//
// Order:   ascending reversed index, as in HashMap.
// Cost:    every operation touches one word of bits, or two, and now and then a summary of it.
// Errors:  reserve() throws std::bad_alloc and changes nothing.
// Threads: no lock inside; the owner serialises every call.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/bitReverse.h>
#include <Vel/detail/OrderBits.h>
#include <algorithm>
#include <bit>
#include <cstddef>
#include <new>

namespace Vel {

class IndexSet {
public:
    using Key = U32;
    using Value = bool;
    class Cursor;

    bool has(Key index) const noexcept { return index < limit_ && bits_.has(position(index)); }

    // With true, the index becomes a member. False when it cannot be one: it is not below the limit, or the value is false.
    bool add(Key index, Value value) noexcept {
        if (!value || index >= limit_) return false;
        if (has(index)) return true;
        bits_.set(position(index));
        ++count_;
        return true;
    }

    bool set(Key index, Value value) noexcept { return add(index, value); }

    // Sets `value` to true for a member; false, as it is, for others.
    bool find(Key index, Value& value) const noexcept {
        if (!has(index)) return false;
        value = true;
        return true;
    }

    // The same, and removes it.
    bool take(Key index, Value& value) noexcept {
        if (!find(index, value)) return false;
        bits_.clear(position(index));
        --count_;
        return true;
    }

    // Removes the first member and returns it; there is one.
    Key takeFirst() noexcept {
        const U32 first = bits_.next(0);
        bits_.clear(first);
        --count_;
        return index(first);
    }

    U32 count() const noexcept { return count_; }

    // Gives the memory back; the limit is 0 then.
    void clear() noexcept {
        bits_.release();
        limit_ = count_ = 0;
    }

    // Makes the limit at least `indexes`, at most 2^31, if the set is empty; a set with members keeps
    // its limit.
    void reserve(U32 indexes) {
        if (count_ != 0 || indexes <= limit_) return;
        const auto bits = std::min(31U, static_cast<unsigned>(std::bit_width(indexes - 1)));
        if (!bits_.make(bits)) throw std::bad_alloc();
        shift_ = 31 - bits;
        limit_ = U32{1} << bits;
    }

    Cursor first() const noexcept;

    static bool ordersBefore(Key a, Key b) noexcept { return hashesBelow(a, b); }

    // How many broken invariants the set can see in itself. O(limit).
    unsigned auditErrors() const noexcept;

    std::size_t heapBytes() const noexcept { return limit_ != 0 ? bits_.heapBytes() : 0; }

private:
    // The index's lowest bits reversed, as many as the limit takes.
    U32 position(Key index) const noexcept { return bitReverse(index) >> 1 >> shift_; }

    Key index(U32 position) const noexcept { return bitReverse(position << shift_ << 1); }

    detail::OrderBits bits_;
    unsigned shift_ = 0; // less one: the set of one index has no bit of position
    U32 limit_ = 0;      // a power of two, or 0
    U32 count_ = 0;
};

// Stands on a member, or behind the last. Stays where it is when the set changes: behind() goes on from the index.
class IndexSet::Cursor {
public:
    Cursor() noexcept = default;

    explicit Cursor(const IndexSet& set) noexcept : set_(&set) {
        if (set.limit_ != 0) standOn(0);
    }

    explicit operator bool() const noexcept { return position_ != detail::OrderBits::none; }

    Key key() const noexcept { return set_->index(position_); }

    // Whether it knows the value under this key.
    bool isAt(Key index) const noexcept { return *this && key() == index && set_->has(index); }

    Value value() const noexcept { return true; }

    // Goes to the first member that orders behind the index.
    void behind(Key index) noexcept {
        position_ = detail::OrderBits::none;
        if (set_->limit_ != 0) standOn(set_->position(index) + 1);
    }

private:
    void standOn(U32 from) noexcept {
        position_ = from < set_->limit_ ? set_->bits_.next(from) : detail::OrderBits::none;
    }

    const IndexSet* set_ = nullptr;
    U32 position_ = detail::OrderBits::none;
};

inline IndexSet::Cursor IndexSet::first() const noexcept { return Cursor(*this); }

inline unsigned IndexSet::auditErrors() const noexcept {
    if (limit_ == 0) return count_ != 0 ? 1 : 0;
    U32 members = 0;
    for (Cursor at = first(); at; at.behind(at.key())) ++members;
    return bits_.auditErrors() + (members != count_ ? 1 : 0);
}

} // namespace Vel
