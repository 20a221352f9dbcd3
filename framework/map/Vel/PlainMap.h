// PlainMap.h - a map from keys that are their own fold to numbers, without an object for each
// member.
//
// Key:     a type of one U32 that its hash gives and its constructor takes.
// Owns:    its lines (docs/map.md), in which key and number lie.
// Order:   HashMap's: ascending reversed key.
// Cost:    find, set and erase O(1) expected, O(log members) for any keys; one cache line each as a
//          rule.
// Errors:  add(), set() and reserve() throw std::bad_alloc and change nothing.
// Threads: no lock inside; the owner serialises every call.
// ABI:     layout: one line of the map, of 64 bytes (detail/Line.h), and two counters; and inline
//          code.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/detail/LineMap.h>
#include <Vel/detail/MemberKind.h>
#include <concepts>
#include <cstddef>

namespace Vel {

template <class KeyType>
class PlainMap {
    static_assert(std::constructible_from<KeyType, U32> && sizeof(KeyType) == sizeof(U32));

public:
    using Key = KeyType;
    using Value = U32;
    class Cursor;

    PlainMap() noexcept = default;

    PlainMap(const PlainMap&) = delete;
    PlainMap& operator=(const PlainMap&) = delete;

    ~PlainMap() { clear(); }

    // Sets `value` to the number under the key and returns true, or returns false. Always inline:
    // GCC moves it out of a table's writes as soon as others call it, too.
    [[gnu::always_inline]] bool find(Key key, Value& value) const noexcept {
        const U32* const found = lines_.find(Asked{keyFold(key)});
        if (found == nullptr) return false;
        value = *found;
        return true;
    }

    // Adds a key that is absent. True: it can hold every value.
    bool add(Key key, Value value) {
        lines_.add(detail::MemberKind(), Asked{keyFold(key)}, value);
        return true;
    }

    // Overwrites the number of a key that is there, or adds it.
    bool set(Key key, Value value) {
        const U32* const found = lines_.find(Asked{keyFold(key)});
        if (found == nullptr) return add(key, value);
        *const_cast<U32*>(found) = value;
        return true;
    }

    // Removes the key, and sets `value` to what its number was; false if it is not here.
    bool take(Key key, Value& value) noexcept { return lines_.take(Asked{keyFold(key)}, value); }

    // Fetches from memory what a look-up of the key will look at.
    [[gnu::always_inline]] void fetch(Key key) const noexcept { lines_.fetch(keyFold(key)); }

    U32 count() const noexcept { return lines_.size(); }

    void clear() noexcept { lines_.clear(detail::MemberKind()); }

    // Room for so many members at once.
    void reserve(U32 members) { lines_.reserve(detail::MemberKind(), members); }

    Cursor first() const noexcept { return Cursor(*this); }

    static bool ordersBefore(Key a, Key b) noexcept { return hashesBelow(keyFold(a), keyFold(b)); }

    // How many broken invariants the map can see in itself. O(count).
    unsigned auditErrors() const noexcept { return lines_.auditErrors(detail::MemberKind()); }

    // Bytes that the map holds beside itself.
    std::size_t heapBytes() const noexcept { return lines_.heapBytes(); }

private:
    using Lines = detail::LineMap<U32>;

    // Keys of one fold are one key.
    struct Asked {
        static constexpr bool hasRanks = false;
        static constexpr bool hasTrees = false;

        U32 fold() const noexcept { return key; }

        static bool is(U32 /*number*/) noexcept { return true; }

        U32 key;
    };

    Lines lines_;
};

// Stands on a member, or behind the last. Stays where it is when the map changes: behind() goes on
// from the key.
template <class KeyType>
class PlainMap<KeyType>::Cursor {
public:
    Cursor() noexcept = default;

    explicit Cursor(const PlainMap& map) noexcept : map_(&map) {
        standOn(map.lines_.first(detail::MemberKind(), spot_));
    }

    explicit operator bool() const noexcept { return number_ != nullptr; }

    Key key() const noexcept { return key_; }

    // Whether it knows the value under this key.
    bool isAt(Key key) const noexcept {
        return number_ != nullptr && map_->lines_.isGood(spot_) && key_ == key;
    }

    // Precondition: isAt(key()).
    Value value() const noexcept { return *number_; }

    // Goes to the first member that orders behind the key.
    void behind(Key key) noexcept {
        if (number_ != nullptr && map_->lines_.isGood(spot_)) {
            if (key_ == key)
                return standOn(
                    map_->lines_.next(detail::MemberKind(), keyFold(key), *number_, spot_));
            if (ordersBefore(key, key_)) return;
        }
        const U32 hash = keyHash(key) + 1; // 0 behind the last of all hashes
        standOn(hash != 0 ? map_->lines_.notBelow(detail::MemberKind(), hash, spot_) : nullptr);
    }

private:
    void standOn(const U32* number) noexcept {
        number_ = number;
        if (number != nullptr) key_ = Key(spot_.line->at.word[number - spot_.line->at.member]);
    }

    const PlainMap* map_ = nullptr;
    typename Lines::Spot spot_;
    const U32* number_ = nullptr;
    Key key_{};
};

} // namespace Vel
