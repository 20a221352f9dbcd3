// IndexSet.h - a set of indexes below a limit, in the order of a map of them: the marks of a table
// without its lines.
//
// Order:   ascending reversed index, as in HashMap.
// Cost:    every operation touches one word of marks, and now and then one more of each level
//          above; about a byte an index. The first index has no mark: one that comes and goes in an
//          empty set, as a full table's slots do, touches none.
// Errors:  reserve() throws std::bad_alloc and changes nothing.
// Threads: no lock inside; the owner serialises every call.
// ABI:     layout, and inline code.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/detail/Marks.h>
#include <algorithm>
#include <bit>
#include <cstddef>
#include <new>
#include <utility>

namespace Vel {

class IndexSet {
public:
    using Key = U32;
    using Value = bool;
    class Cursor;

    IndexSet() noexcept = default;

    IndexSet(const IndexSet&) = delete;
    IndexSet& operator=(const IndexSet&) = delete;

    ~IndexSet() { marks_.release(); }

    bool has(Key index) const noexcept {
        return index < limit_ && (index == first_ || marks_.has(index));
    }

    // With true, the index becomes a member. False when it cannot be one: it is not below the
    // limit, or the value is false.
    bool add(Key index, Value value) noexcept {
        if (!value || index >= limit_) return false;
        if (index == first_) return true;
        const bool isFirst = count_ == 0 || hashesBelow(index, first_);
        const Key marked = isFirst ? std::exchange(first_, index) : index;
        if (marked == detail::Marks::none || marks_.set(marked)) ++count_;
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
        remove(index);
        return true;
    }

    // Removes the first member and returns it; there is one.
    Key takeFirst() noexcept {
        const Key first = first_;
        remove(first);
        return first;
    }

    U32 count() const noexcept { return count_; }

    // Gives the memory back; the limit is 0 then.
    void clear() noexcept {
        marks_.release();
        limit_ = count_ = 0;
        first_ = detail::Marks::none;
    }

    // Makes the limit at least `indexes`, at most 2^31, if the set is empty; a set with members
    // keeps its limit.
    void reserve(U32 indexes) {
        if (count_ != 0 || indexes <= limit_) return;
        const U32 limit = std::bit_ceil(std::min(indexes, U32{1} << 31));
        if (!marks_.reach(limit)) throw std::bad_alloc();
        limit_ = limit;
    }

    Cursor first() const noexcept;

    static bool ordersBefore(Key a, Key b) noexcept { return hashesBelow(a, b); }

    // How many broken invariants the set can see in itself. O(limit).
    unsigned auditErrors() const noexcept;

    std::size_t heapBytes() const noexcept { return marks_.heapBytes(); }

private:
    // The first member behind the first one.
    Key next(Key first) const noexcept {
        return count_ > 1 ? marks_.next(first) : detail::Marks::none;
    }

    void remove(Key index) noexcept {
        const Key marked = index == first_ ? first_ = next(index) : index;
        if (--count_ != 0) marks_.clear(marked);
    }

    detail::Marks marks_{};
    U32 limit_ = 0; // a power of two, or 0
    U32 count_ = 0;
    Key first_ = detail::Marks::none;
};

// Stands on a member, or behind the last. Stays where it is when the set changes: behind() goes on
// from the index.
class IndexSet::Cursor {
public:
    Cursor() noexcept = default;

    explicit Cursor(const IndexSet& set) noexcept : set_(&set), index_(set.first_) {}

    explicit operator bool() const noexcept { return index_ != detail::Marks::none; }

    Key key() const noexcept { return index_; }

    // Whether it knows the value under this key.
    bool isAt(Key index) const noexcept { return *this && index_ == index && set_->has(index); }

    Value value() const noexcept { return true; }

    // Goes to the first member that orders behind the index.
    void behind(Key index) noexcept {
        if (set_->count_ == 0 || hashesBelow(index, set_->first_))
            index_ = set_->first_;
        else // one that the set has no room for orders behind the one that its lower bits are
            index_ = set_->marks_.next(index & (set_->limit_ - 1));
    }

private:
    const IndexSet* set_ = nullptr;
    U32 index_ = detail::Marks::none;
};

inline IndexSet::Cursor IndexSet::first() const noexcept { return Cursor(*this); }

inline unsigned IndexSet::auditErrors() const noexcept {
    U32 members = 0;
    unsigned errors = 0;
    Key last = detail::Marks::none;
    for (Cursor at = first(); at; at.behind(last), ++members) {
        const bool isMarked = marks_.has(at.key());
        if (at.key() >= limit_ || isMarked != (members != 0)) ++errors;
        if (members != 0 && !hashesBelow(last, at.key())) ++errors;
        last = at.key();
    }
    return errors + (members != count_ ? 1 : 0);
}

} // namespace Vel
