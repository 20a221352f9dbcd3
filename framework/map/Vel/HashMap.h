// HashMap.h - the typed face of HashMapGeneric: members of class Entry, found by their Key.
//
// Entry:   derives from MapLink and has fwkKey(); MapMember.h shows the kinds.
// Copying: clones every member: one object cannot be in two maps. Only for entries that can be copied.
// Speed:   hash and comparison are compiled in; the vtable is asked where a bucket is divided, and by audits.
#pragma once

#include <Vel/HashMapGeneric.h>
#include <Vel/HashMapVTable.h>
#include <Vel/KeyHash.h>
#include <Vel/Ptr.h>
#include <cstddef>
#include <iterator>
#include <utility>

namespace Vel {

template <class Entry, class Key, class Value>
class HashMap : public HashMapGeneric {
public:
    class IteratorConst;

    explicit HashMap(unsigned initialSize = 4)
        : HashMapGeneric(initialSize, HashMapVTable<Entry, Key>::instance()) {}

    HashMap(const HashMap& other) : HashMap() { insertClones(other); }

    HashMap& operator=(const HashMap& other) {
        if (this == &other) return *this;
        emptyAllBuckets();
        insertClones(other);
        return *this;
    }

    // The member with the key, or null; borrowed.
    Entry* find(const Key& key) const noexcept {
        return static_cast<Entry*>(buckets_.find(Ops(), keyFold<Key>(key), &key, IsKey{key}));
    }

    Entry* operator[](const Key& key) const noexcept { return find(key); }

    // Takes a reference to an object that is in no map. A member of equal key gives way to it.
    void insert(Entry& member) {
        MapLink* const replaced = buckets_.add(Ops(), Ops().fold(&member), &member);
        if (replaced != nullptr) replaced->referencesDec();
    }

    // Drops the map's reference to a member. One that is not here changes nothing.
    void remove(Entry& member) {
        if (buckets_.remove(Ops(), &member)) member.referencesDec();
    }

    // Takes the member with the key out of the map and returns it with the map's reference, or null. One look-up, and the
    // member is not touched where the key's fold tells all.
    Ptr<Entry> take(const Key& key) {
        MapLink* const member = buckets_.take(Ops(), keyFold<Key>(key), &key, IsKey{key});
        Ptr<Entry> taken = static_cast<Entry*>(member);
        if (member != nullptr) member->referencesDec();
        return taken;
    }

    // Room for so many members at once, as HashMapGeneric::setSize0().
    void reserve(std::size_t members) { setSize0(static_cast<unsigned>(members)); }

    IteratorConst begin() const noexcept { return IteratorConst(*this); }

    std::default_sentinel_t end() const noexcept { return {}; }

    // Calls visit(member) for every member, in no order, which is faster than a walk. `visit` may be copied; it does not
    // change the map.
    template <class Visit>
    void forEach(const Visit& visit) const {
        buckets_.visitAll([visit](MapLink* member) { visit(*static_cast<Entry*>(member)); });
    }

    // The first member in the map's order, or null; borrowed.
    Entry* first() const noexcept { return static_cast<Entry*>(buckets_.first()); }

    // The member behind `member`, or null.
    Entry* next(const Entry& member) const noexcept {
        return static_cast<Entry*>(buckets_.next(Ops(), &member));
    }

    // The first member in the map's order behind the key, whether a member has it or not; or null.
    Entry* firstBehind(const Key& key) const noexcept {
        detail::OrderedBuckets::Place place;
        if constexpr (foldIsKey<Key>) {
            const U32 hash = keyHash(key) + 1; // 0 behind the last of all hashes
            return hash != 0 ? static_cast<Entry*>(buckets_.notBelow(Ops(), hash, place)) : nullptr;
        } else {
            if (const Entry* const member = find(key)) return next(*member);
            MapLink* at = buckets_.notBelow(Ops(), keyHash(key), place);
            while (at != nullptr && !ordersBefore(key, keyOf(at)))
                at = buckets_.next(Ops(), at, place);
            return static_cast<Entry*>(at);
        }
    }

    // Stands there.
    IteratorConst behind(const Key& key) const noexcept {
        return IteratorConst(*this, firstBehind(key));
    }

    // Whether `a` comes before `b` in every map of this kind.
    static bool ordersBefore(const Key& a, const Key& b) noexcept {
        const U32 foldOfA = keyFold<Key>(a);
        const U32 foldOfB = keyFold<Key>(b);
        return foldOfA == foldOfB ? a < b : hashesBelow(foldOfA, foldOfB);
    }

private:
    static decltype(auto) keyOf(const MapLink* member) noexcept {
        return static_cast<const Entry*>(member)->fwkKey();
    }

    // Whether a member of this key's fold has the key.
    struct IsKey {
        const Key& key;

        bool operator()(const MapLink* member) const noexcept {
            return foldIsKey<Key> || keyOf(member) == key;
        }
    };

    struct RankOps;

    // What the buckets must know of members.
    struct Ops {
        static constexpr bool hasPlainMembers = false;
        static constexpr bool hasRanks = hasKeyRank<Key>;
        using Ranks = RankOps;

        U32 fold(const MapLink* member) const noexcept { return keyFold<Key>(keyOf(member)); }

        bool isLess(const MapLink* a, const MapLink* b) const noexcept {
            return keyOf(a) < keyOf(b);
        }

        // Asked only of members of one fold.
        bool isEqual(const MapLink* a, const MapLink* b) const noexcept {
            if constexpr (foldIsKey<Key>)
                return true;
            else
                return keyOf(a) == keyOf(b);
        }

        const HashMapVTableGeneric& vtable() const noexcept {
            return HashMapVTable<Entry, Key>::instance();
        }
    };

    // The same for the map of ranks of those that share a hash.
    struct RankOps : Ops {
        static constexpr bool hasRanks = false;

        U32 fold(const MapLink* member) const noexcept {
            const Key& key = keyOf(member);
            return foldOf(&key);
        }

        U32 foldOf(const void* key) const noexcept {
            return bitReverse(keyRank<Key>(*static_cast<const Key*>(key)));
        }
    };

    void insertClones(const HashMap& other) {
        reserve(other.size());
        for (const Entry& member : other) {
            const Ptr<Entry> clone = new Entry(member);
            insert(*clone);
        }
    }
};

// Stands on a member, or behind the last. Keeps nothing alive. While the map does not change, a step looks up nothing.
template <class Entry, class Key, class Value>
class HashMap<Entry, Key, Value>::IteratorConst {
public:
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;

    IteratorConst() noexcept = default;

    explicit IteratorConst(const HashMap& map) noexcept
        : map_(&map), member_(static_cast<Entry*>(map.buckets_.first(place_))) {}

    // On a member of the map, or behind the last for null. The first step looks it up.
    IteratorConst(const HashMap& map, Entry* member) noexcept : map_(&map), member_(member) {}

    Entry& operator*() const noexcept { return *member_; }

    Entry* operator->() const noexcept { return member_; }

    Entry* entry() const noexcept { return member_; }

    explicit operator bool() const noexcept { return member_ != nullptr; }

    // Goes on to the next member in the map's order.
    void advance() noexcept {
        member_ = static_cast<Entry*>(map_->buckets_.next(Ops(), member_, place_));
    }

    IteratorConst& operator++() noexcept {
        advance();
        return *this;
    }

    IteratorConst operator++(int) noexcept {
        IteratorConst old = *this;
        advance();
        return old;
    }

    bool operator==(const IteratorConst& other) const noexcept { return member_ == other.member_; }

    bool operator==(std::default_sentinel_t) const noexcept { return member_ == nullptr; }

private:
    const HashMap* map_ = nullptr;
    detail::OrderedBuckets::Place place_;
    Entry* member_ = nullptr;
};

} // namespace Vel
