// PlainMap.h - a map from keys that are their own fold to numbers, without an object for each member.
//
// Key:     a type of one U32 that its hash gives and its constructor takes.
// Owns:    the buckets (detail/OrderedBuckets.h). Key and number lie in the bucket; a member becomes an object, which nobody
//          else sees, where a bucket has more than it can seat, and where a number does not fit (31 bits in a 32-bit
//          process).
// Order:   HashMap's: ascending reversed key.
// Cost:    find, set and erase O(1) expected, O(log members) for any keys; one cache line each as a rule.
// Errors:  set() and reserve() throw std::bad_alloc and change nothing.
// Threads: no lock inside; the owner serialises every call.
#pragma once

#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/MapMember.h>
#include <Vel/SharedBits.h>
#include <Vel/bitReverse.h>
#include <Vel/detail/OrderedBuckets.h>
#include <Vel/detail/PlainMember.h>
#include <concepts>

namespace Vel {

template <class KeyType>

    requires std::constructible_from<KeyType, U32> &&
        (sizeof(KeyType) == sizeof(U32)) class PlainMap {
    public:
        using Key = KeyType;
        using Value = U32;
        class Cursor;

        // Sets `value` to the number under the key and returns true, or returns false. Always inline: GCC moves it out of a
        // table's writes as soon as others call it, too.
        [[gnu::always_inline]] bool find(Key key, Value& value) const noexcept {
            const U32 fold = keyFold(key);
            const MapLink* const member = buckets_.find(Ops(), fold, &fold, IsKey());
            if (member == nullptr) return false;
            value = numberOf(member);
            return true;
        }

        // Adds a key that is absent. True: it can hold every value.
        bool add(Key key, Value value) {
            const U32 fold = keyFold(key);
            buckets_.add(Ops(), fold, memberFor(fold, value));
            return true;
        }

        // Overwrites the number of a key that is there, or adds it.
        bool set(Key key, Value value) {
            const U32 fold = keyFold(key);
            MapLink** const place = buckets_.find(Ops(), fold);
            if (place == nullptr)
                add(key, value);
            else if (!detail::PlainMember::is(*place))
                static_cast<Object*>(*place)->valueIs(value);
            else
                overwrite(place, fold, value);
            return true;
        }

        // Removes the key, and sets `value` to what its number was; false if it is not here.
        bool take(Key key, Value& value) noexcept {
            const U32 fold = keyFold(key);
            MapLink* const member = buckets_.take(Ops(), fold, &fold, IsKey());
            if (member == nullptr) return false;
            value = numberOf(member);
            if (!detail::PlainMember::is(member)) member->referencesDec();
            return true;
        }

        // Fetches from memory what a look-up of the key will look at.
        [[gnu::always_inline]] void fetch(Key key) const noexcept { buckets_.fetch(keyFold(key)); }

        U32 count() const noexcept { return buckets_.size(); }

        void clear() noexcept { buckets_.clear(); }

        // Room for so many members at once. `shared` is of some keys, like those that will come to an empty map.
        void reserve(U32 members, const SharedBits& shared = SharedBits()) {
            buckets_.reserve(Ops(), members, shared);
        }

        Cursor first() const noexcept { return Cursor(*this); }

        static bool ordersBefore(Key a, Key b) noexcept {
            return hashesBelow(keyFold(a), keyFold(b));
        }

        // How many broken invariants the map can see in itself. O(count).
        unsigned auditErrors() const noexcept {
            return buckets_.auditErrors(detail::VTableOps(Ops().vtable()));
        }

        // Bytes that the map holds beside itself; the objects of crowded members not counted.
        std::size_t heapBytes() const noexcept { return buckets_.heapBytes(); }

    private:
        class Object final : public MapMember<U32, Value> {
        public:
            using MapMember<U32, Value>::MapMember;
        };

        struct Ops {
            static constexpr bool hasPlainMembers = true;
            static constexpr bool hasRanks = false;

            U32 fold(const MapLink* object) const noexcept {
                return static_cast<const Object*>(object)->key();
            }

            bool isLess(const MapLink*, const MapLink*) const noexcept { return false; }

            bool isEqual(const MapLink*, const MapLink*) const noexcept { return true; }

            MapLink* embodied(U32 fold, const MapLink* plain) const {
                return new Object(fold, numberOf(plain));
            }

            const HashMapVTableGeneric& vtable() const noexcept {
                return HashMapVTable<Object, U32>::instance();
            }
        };

        // Keys of one fold are one key.
        struct IsKey {
            bool operator()(const MapLink*) const noexcept { return true; }
        };

        static Value numberOf(const MapLink* member) noexcept {
            if (detail::PlainMember::is(member)) [[likely]]
                return static_cast<Value>(detail::PlainMember::number(member));
            return static_cast<const Object*>(member)->value();
        }

        static MapLink* memberFor(U32 fold, Value value) {
            if (value <= detail::PlainMember::largest) [[likely]]
                return detail::PlainMember::of(value);
            return new Object(fold, value);
        }

        static void overwrite(MapLink** place, U32 fold, Value value) {
            MapLink* const member = memberFor(fold, value);
            if (!detail::PlainMember::is(member)) member->referencesInc();
            *place = member;
        }

        detail::OrderedBuckets buckets_;
    };

    // Stands on a member, or behind the last. Stays where it is when the map changes: behind() goes on from the key.
    template <class KeyType>

        requires std::constructible_from<KeyType, U32> &&
            (sizeof(KeyType) == sizeof(U32)) class PlainMap<KeyType>::Cursor {
        public:
            Cursor() noexcept = default;

            explicit Cursor(const PlainMap& map) noexcept : map_(&map) {
                standOn(map.buckets_.first(place_));
            }

            explicit operator bool() const noexcept { return member_ != nullptr; }

            Key key() const noexcept { return key_; }

            // Whether it knows the value under this key.
            bool isAt(Key key) const noexcept {
                return member_ != nullptr && map_->buckets_.isGood(place_) && key_ == key;
            }

            Value value() const noexcept {
                const MapLink* const seated = place_.seated();
                return numberOf(seated != nullptr ? seated : member_);
            }

            // Goes to the first member that orders behind the key.
            void behind(Key key) noexcept {
                const detail::OrderedBuckets& buckets = map_->buckets_;
                if (member_ != nullptr && buckets.isGood(place_)) {
                    if (key_ == key) return standOn(buckets.behind(place_, member_));
                    if (ordersBefore(key, key_)) return;
                }
                const U32 hash = keyHash(key) + 1; // 0 behind the last of all hashes
                standOn(hash != 0 ? buckets.notBelow(Ops(), hash, place_) : nullptr);
            }

        private:
            void standOn(MapLink* member) noexcept {
                member_ = member;
                if (member != nullptr) key_ = Key(place_.fold(Ops(), member));
            }

            const PlainMap* map_ = nullptr;
            detail::OrderedBuckets::Place place_;
            MapLink* member_ = nullptr;
            Key key_{};
        };

} // namespace Vel
