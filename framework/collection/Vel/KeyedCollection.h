// KeyedCollection.h - the pattern of every keyed collection attribute, once.
//
// A class declares such an attribute, with the functions that lead here, by VEL_COLLECTION
// (CollectionAttribute.h).
//
// Entry:    a MapMember, or another MapLink with Key, Value, fwkKey(), value() and valueIs(); or an
//           object that is its own member: a MapLink with Key, Value and fwkKey(), its Value a Ptr
//           to itself.
// Order:    the map's: for (const auto& [key, value] : collection).
// Identity: overwriting keeps the member; only create() makes one.
// Compare:  equal when the counts are equal and each member is in the other with an equal value; <
//           goes by pairs of key and value in the map's order, the first that differ decide, and a
//           prefix is less.
// Copying:  clones the members.
#pragma once

#include <Vel/HashMap.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <cstddef>
#include <iterator>
#include <utility>

namespace Vel {

template <class EntryType>
class KeyedCollection {
public:
    using Entry = EntryType;
    using Key = typename Entry::Key;
    using Value = typename Entry::Value;
    using Map = HashMap<Entry, Key, Value>;
    class Iterator;

    // The value under the key, or a default one.
    Value value(const Key& key) const {
        Entry* entry = map_.find(key);
        return entry != nullptr ? valueOf(entry) : Value();
    }

    // The member with the key, or null; borrowed.
    Entry* find(const Key& key) const noexcept { return map_.find(key); }

    bool has(const Key& key) const noexcept { return find(key) != nullptr; }

    // Makes and inserts a member; the key is absent. The arguments are those of Entry's
    // constructor.
    template <class... Arguments>
    Ptr<Entry> create(const Arguments&... arguments) {
        Ptr<Entry> entry = new Entry(arguments...);
        map_.insert(*entry);
        return entry;
    }

    // Overwrites the member with the key in place, or creates one.
    void set(const Key& key, const Value& value) {
        if (Entry* entry = map_.find(key))
            entry->valueIs(value);
        else
            create(key, value);
    }

    // The same where the value says its key: Entry::keyOf(value).
    void set(const Value& value) requires requires { Entry::keyOf(value); }

    {
        if (Entry* entry = map_.find(Entry::keyOf(value)))
            entry->valueIs(value);
        else
            create(value);
    }

    // Removes the member with the key and returns it; null if there is none.
    Ptr<Entry> del(const Key& key) { return map_.take(key); }

    // Removes the member that the iterator stands on; the iterator goes on to the next.
    void del(Iterator& position) {
        const Ptr<Entry> entry = position.entry();
        ++position;
        map_.remove(*entry);
    }

    // Removes every member.
    void delAll() noexcept { map_.emptyAllBuckets(); }

    // Room for so many members at once: creating them then does not grow the map.
    void reserve(U32 members) { map_.reserve(members); }

    // 32 bits: more members do not fit a process that counts them.
    U32 count() const noexcept { return static_cast<U32>(map_.size()); }

    // The first member in the map's order, or null; borrowed.
    Entry* first() const noexcept { return map_.first(); }

    // Calls visit(member) for every member, in no order, which is faster than a walk. `visit` may
    // be copied; it does not change the collection.
    template <class Visit>
    void forEach(const Visit& visit) const {
        map_.forEach(visit);
    }

    // The first member in the map's order behind the key, whether a member has it or not; null if
    // there is none. Borrowed.
    Entry* firstBehind(const Key& key) const noexcept { return map_.firstBehind(key); }

    Iterator begin() const noexcept { return Iterator(map_.begin()); }

    // Stands on the first member that orders behind the key, which need not be here: where to go on
    // when others had their turn at the collection since the member with this key was removed.
    Iterator behind(const Key& key) const noexcept { return Iterator(map_.behind(key)); }

    std::default_sentinel_t end() const noexcept { return {}; }

    // How many broken invariants the map can see in itself. O(count).
    unsigned auditErrors(unsigned level) const { return map_.auditErrors(level); }

    friend bool operator==(const KeyedCollection& a, const KeyedCollection& b) {
        if (a.count() != b.count()) return false;
        const auto isInB = [&b](const Iterator& at) {
            const auto [key, value] = *at;
            Entry* const other = b.find(key);
            return other != nullptr && valueOf(other) == value;
        };
        auto at = a.begin();
        while (at != a.end() && isInB(at)) ++at;
        return at == a.end();
    }

    friend bool operator<(const KeyedCollection& a, const KeyedCollection& b) {
        auto x = a.begin();
        auto y = b.begin();
        for (; x != a.end() && y != b.end(); ++x, ++y) {
            const auto [keyA, valueA] = *x;
            const auto [keyB, valueB] = *y;
            if (!(keyA == keyB)) return keyA < keyB;
            if (!(valueA == valueB)) return valueA < valueB;
        }
        return x == a.end() && y != b.end();
    }

private:
    static decltype(auto) valueOf(Entry* entry) {
        if constexpr (requires { entry->value(); })
            return entry->value();
        else
            return Value(entry);
    }

    Map map_;
};

// Stands on a member, or behind the last; gives key and value.
template <class EntryType>
class KeyedCollection<EntryType>::Iterator {
public:
    using value_type = std::pair<const Key&, decltype(valueOf(std::declval<Entry*>()))>;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;

    explicit Iterator(typename Map::IteratorConst position) noexcept : position_(position) {}

    value_type operator*() const noexcept {
        return {position_->fwkKey(), valueOf(position_.entry())};
    }

    Entry* entry() const noexcept { return position_.entry(); }

    const Key& key() const noexcept { return position_->fwkKey(); }

    explicit operator bool() const noexcept { return static_cast<bool>(position_); }

    void advance() noexcept { position_.advance(); }

    Iterator& operator++() noexcept {
        advance();
        return *this;
    }

    Iterator operator++(int) noexcept {
        Iterator old = *this;
        advance();
        return old;
    }

    bool operator==(const Iterator&) const noexcept = default;

    bool operator==(std::default_sentinel_t) const noexcept { return !position_; }

private:
    typename Map::IteratorConst position_;
};

} // namespace Vel
