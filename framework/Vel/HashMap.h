// HashMap.h - the typed face of HashMapGeneric: members of class Entry, found by their Key.
//
// Entry:   derives from MapLink and has fwkKey(); MapMember.h shows the kinds.
// Copying: clones every member: one object cannot be in two maps. Only for entries that can be copied.
// Speed:   hash and comparison are inlined.
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

    explicit HashMap(unsigned initialSize = 4) noexcept
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
        const U32 fold = keyFold(key);
        MapLink* member = buckets_.chain(fold);
        for (unsigned steps = 0; member != nullptr; member = member->fwkNext()) {
            if (static_cast<const Entry*>(member)->fwkKey() == key)
                return static_cast<Entry*>(member);
            if (++steps > detail::OrderedBuckets::chainMax)
                return static_cast<Entry*>(buckets_.find(&key, fold));
        }
        return nullptr;
    }

    Entry* operator[](const Key& key) const noexcept { return find(key); }

    // Takes a reference to the member, whose key is in the map no more than once.
    void insert(Entry& member) {
        const Key& key = member.fwkKey();
        buckets_.insert(member, &key, keyFold(key));
    }

    // Drops the map's reference to a member.
    void remove(Entry& member) { buckets_.remove(member, keyFold(member.fwkKey())); }

    IteratorConst begin() const noexcept { return IteratorConst(*this, first()); }

    std::default_sentinel_t end() const noexcept { return {}; }

    // The first member in the map's order, or null; borrowed.
    Entry* first() const noexcept { return static_cast<Entry*>(buckets_.first()); }

    // The member behind `member`, or null.
    Entry* next(const Entry& member) const noexcept {
        MapLink* next = member.fwkNext();
        if (next == nullptr) next = buckets_.firstBehindChain(keyFold(member.fwkKey()));
        return static_cast<Entry*>(next);
    }

private:
    void insertClones(const HashMap& other) {
        for (const Entry& member : other) {
            const Ptr<Entry> clone = new Entry(member);
            insert(*clone);
        }
    }
};

// Stands on a member, or behind the last. Keeps nothing alive.
template <class Entry, class Key, class Value>
class HashMap<Entry, Key, Value>::IteratorConst {
public:
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;

    IteratorConst() noexcept = default;

    IteratorConst(const HashMap& map, Entry* member) noexcept : map_(&map), member_(member) {}

    Entry& operator*() const noexcept { return *member_; }

    Entry* operator->() const noexcept { return member_; }

    Entry* entry() const noexcept { return member_; }

    explicit operator bool() const noexcept { return member_ != nullptr; }

    // Goes on to the next member in the map's order.
    void advance() noexcept { member_ = map_->next(*member_); }

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
    Entry* member_ = nullptr;
};

} // namespace Vel
