// HashMap.h - the typed face of HashMapGeneric: members of class Entry, found by their Key.
//
// Entry:   derives from MapLink and has fwkKey(); MapMember.h shows the kinds.
// Copying: clones every member: one object cannot be in two maps. Only for entries that can be
//          copied.
// Speed:   hash and comparison are compiled in; the vtable is asked for the order of equal hashes,
//          and by audits.
// ABI:     HashMapGeneric's layout, and inline code.
#pragma once

#include <Vel/HashMapGeneric.h>
#include <Vel/HashMapVTable.h>
#include <Vel/KeyHash.h>
#include <Vel/Ptr.h>
#include <Vel/bitReverse.h>
#include <Vel/detail/LineMap.h>
#include <Vel/detail/MemberKind.h>
#include <cstddef>
#include <cstdint>
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
    Entry* find(const Key& key) const noexcept { return entryAt(lines_.find(Asked{key})); }

    Entry* operator[](const Key& key) const noexcept { return find(key); }

    // Takes a reference to an object that is in no map. A member of equal key gives way to it.
    void insert(Entry& member) {
        const std::uintptr_t replaced =
            lines_.add(kind(), Asked{keyOf(member), addressOf(member)}, addressOf(member));
        member.referencesInc();
        if (replaced != 0) [[unlikely]]
            entryOf(replaced)->referencesDec();
    }

    // Drops the map's reference to a member. One that is not here changes nothing.
    void remove(Entry& member) {
        std::uintptr_t taken = 0;
        if (lines_.take(Asked{keyOf(member), addressOf(member)}, taken)) member.referencesDec();
    }

    // Takes the member with the key out of the map and returns it with the map's reference, or
    // null. One look-up, and the member is not touched where the key's fold tells all.
    Ptr<Entry> take(const Key& key) {
        std::uintptr_t found = 0;
        if (!lines_.take(Asked{key}, found)) return nullptr;
        Ptr<Entry> taken = entryOf(found);
        entryOf(found)->referencesDec();
        return taken;
    }

    // Room for so many members at once, as HashMapGeneric::setSize0().
    void reserve(std::size_t members) { setSize0(static_cast<unsigned>(members)); }

    IteratorConst begin() const noexcept { return IteratorConst(*this); }

    std::default_sentinel_t end() const noexcept { return {}; }

    // Calls visit(member) for every member, in no order, which is faster than a walk. `visit` may
    // be copied; it does not change the map.
    template <class Visit>
    void forEach(const Visit& visit) const {
        lines_.visitAll([visit](std::uintptr_t member) { visit(*entryOf(member)); });
    }

    // The first member in the map's order, or null; borrowed.
    Entry* first() const noexcept { return entryAt(lines_.first(kind())); }

    // The member behind `member`, or null.
    Entry* next(const Entry& member) const noexcept {
        Lines::Spot spot;
        return entryAt(lines_.next(kind(), foldOf(member), addressOf(member), spot));
    }

    // The first member in the map's order behind the key, whether a member has it or not; or null.
    Entry* firstBehind(const Key& key) const noexcept {
        if constexpr (!foldIsKey<Key>)
            if (const Entry* const member = find(key)) return next(*member);
        const U32 hash = keyHash(key) + (foldIsKey<Key> ? 1 : 0); // 0 behind the last of all hashes
        if (foldIsKey<Key> && hash == 0) return nullptr;
        Lines::Spot spot;
        Entry* at = entryAt(lines_.notBelow(kind(), hash, spot));
        if constexpr (!foldIsKey<Key>)
            while (at != nullptr && !ordersBefore(key, keyOf(*at)))
                at = entryAt(lines_.next(kind(), foldOf(*at), addressOf(*at), spot));
        return at;
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
    static decltype(auto) keyOf(const Entry& member) noexcept { return member.fwkKey(); }

    static Entry* entryOf(std::uintptr_t member) noexcept {
        return static_cast<Entry*>(
            reinterpret_cast<MapLink*>(member)); // NOLINT: what addressOf() gave
    }

    static Entry* entryAt(const std::uintptr_t* place) noexcept {
        return place != nullptr ? entryOf(*place) : nullptr;
    }

    static std::uintptr_t addressOf(const Entry& member) noexcept {
        return reinterpret_cast<std::uintptr_t>(static_cast<const MapLink*>(&member));
    }

    static detail::MemberKind kind() noexcept {
        return detail::MemberKind(&HashMapVTable<Entry, Key>::instance());
    }

    // Asks the lines for the member that has the key, or for one that is wanted.
    struct Asked {
        static constexpr bool hasRanks = hasKeyRank<Key>;
        static constexpr bool hasTrees = !hasKeyRank<Key> && !foldIsKey<Key>;

        U32 fold() const noexcept { return keyFold<Key>(asked); }

        U32 rankWord() const noexcept { return bitReverse(keyRank<Key>(asked)); }

        bool is(std::uintptr_t member) const noexcept {
            return wanted != 0 ? member == wanted
                               : foldIsKey<Key> || keyOf(*entryOf(member)) == asked;
        }

        const void* key() const noexcept { return wanted != 0 ? nullptr : &asked; }

        std::uintptr_t member() const noexcept { return wanted; }

        const Key& asked;
        std::uintptr_t wanted = 0;
    };

    static U32 foldOf(const Entry& member) noexcept { return keyFold<Key>(keyOf(member)); }

    void insertClones(const HashMap& other) {
        reserve(other.size());
        // Not in the map's order, which would tell the lines nothing of the keys to come.
        other.forEach([this](const Entry& member) {
            const Ptr<Entry> clone = new Entry(member);
            insert(*clone);
        });
    }
};

// Stands on a member, or behind the last. Keeps nothing alive. While the map does not change, a
// step looks up nothing.
template <class Entry, class Key, class Value>
class HashMap<Entry, Key, Value>::IteratorConst {
public:
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;

    IteratorConst() noexcept = default;

    explicit IteratorConst(const HashMap& map) noexcept
        : map_(&map), member_(entryAt(map.lines_.first(kind(), spot_))) {}

    // On a member of the map, or behind the last for null. The first step looks it up.
    IteratorConst(const HashMap& map, Entry* member) noexcept : map_(&map), member_(member) {}

    Entry& operator*() const noexcept { return *member_; }

    Entry* operator->() const noexcept { return member_; }

    Entry* entry() const noexcept { return member_; }

    explicit operator bool() const noexcept { return member_ != nullptr; }

    // Goes on to the next member in the map's order.
    void advance() noexcept {
        if (map_->lines_.isGood(spot_) && spot_.order != 0) [[likely]]
            member_ = entryOf(*Lines::standOnNext(spot_));
        else
            member_ =
                entryAt(map_->lines_.next(kind(), foldOf(*member_), addressOf(*member_), spot_));
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
    typename Lines::Spot spot_;
    Entry* member_ = nullptr;
};

} // namespace Vel
