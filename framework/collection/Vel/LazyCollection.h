// LazyCollection.h - a keyed collection whose members become objects when somebody asks for one:
// KeyedCollection's operations, without an object for each member of a large table.
//
// Entry:    a MapMember, as KeyedCollection's.
// Store:    holds the members that nobody has asked for: PlainMap, IndexSet.
// Identity: find() and create() give a member's object; from then on it is this one, until the
//           member is removed. value(), set(), remove() and walks make none.
// Order:    the map's: for (const auto& [key, value] : collection).
// Walks:    stand on a key: they stay good whatever happens to the collection, and go on behind
//           that key.
// Cost:     the store's; where there are objects, one look-up more.
// Errors:   std::bad_alloc, also from find(); then nothing has changed.
// Threads:  no lock inside; the owner serialises every call, find() included.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/KeyedCollection.h>
#include <Vel/Ptr.h>
#include <iterator>
#include <utility>

namespace Vel {

template <class EntryType, class Store>
class LazyCollection {
public:
    using Entry = EntryType;
    using Key = typename Entry::Key;
    using Value = typename Entry::Value;
    class Iterator;

    // Sets `value` to the value under the key and returns true, or returns false. Always inline:
    // short, and called where each instruction counts.
    [[gnu::always_inline]] bool lookUp(const Key& key, Value& value) const noexcept {
        if (store_.find(key, value)) return true;
        if (objects_.count() == 0) return false;
        const Entry* const object = objectWith(key);
        if (object == nullptr) return false;
        value = object->value();
        return true;
    }

    // The value under the key, or a default one. This and has() are calls, so that the look-ups
    // that count stay few, and inline.
    [[gnu::noinline]] Value value(const Key& key) const noexcept {
        Value value{};
        lookUp(key, value);
        return value;
    }

    [[gnu::noinline]] bool has(const Key& key) const noexcept {
        Value value{};
        return lookUp(key, value);
    }

    // The member with the key, or null; borrowed.
    Entry* find(const Key& key) const {
        Value value{};
        if (!store_.find(key, value)) return objects_.find(key);
        Entry* const object = objects_.create(key, value).ptr();
        store_.take(key, value);
        return object;
    }

    // Makes a member. One that has the key already gives way.
    Ptr<Entry> create(const Key& key, const Value& value) {
        Ptr<Entry> object = objects_.create(key, value);
        Value old{};
        store_.take(key, old);
        return object;
    }

    // Adds a member whose key is absent.
    void add(const Key& key, const Value& value) {
        if (!store_.add(key, value)) objects_.create(key, value);
    }

    // Overwrites the member with the key in place, or adds one.
    void set(const Key& key, const Value& value) {
        if (objects_.count() != 0)
            if (Entry* const object = objects_.find(key)) return object->valueIs(value);
        if (!store_.set(key, value)) create(key, value);
    }

    // Removes the member with the key and sets `value` to what its value was; false if there is
    // none.
    bool take(const Key& key, Value& value) noexcept {
        if (store_.take(key, value)) return true;
        if (objects_.count() == 0) return false;
        const Ptr<Entry> object = objects_.del(key);
        if (!object) return false;
        value = object->value();
        return true;
    }

    void remove(const Key& key) noexcept {
        Value value{};
        take(key, value);
    }

    // The same; returns the member, null if there is none.
    Ptr<Entry> del(const Key& key) {
        find(key);
        return objects_.del(key);
    }

    // Removes the member that the iterator stands on; the iterator goes on to the next.
    void del(Iterator& position) {
        const Key key = position.key();
        position.advance();
        remove(key);
    }

    // Removes the first member in the map's order and returns its key; there is one.
    Key takeFirst() noexcept requires requires(Store store) { store.takeFirst(); }

    {
        if (objects_.count() == 0) return store_.takeFirst();
        const Key key = begin().key();
        remove(key);
        return key;
    }

    // Fetches from memory what add() or lookUp() will look at, to be there when they come.
    [[gnu::always_inline]] void fetch(const Key& key) const noexcept requires
        requires(Store store) {
        store.fetch(key);
    }

    { store_.fetch(key); }

    // Removes every member, and gives the room back.
    void delAll() noexcept {
        store_.clear();
        objects_.delAll();
    }

    // Room for so many members at once: creating them then does not grow the store.
    void reserve(U32 members) { store_.reserve(members); }

    U32 count() const noexcept { return store_.count() + objects_.count(); }

    // How many of the members are objects. For tests and tools.
    U32 objects() const noexcept { return objects_.count(); }

    Iterator begin() const noexcept { return Iterator(*this); }

    // On the first member in the map's order behind the key, whether a member has it or not.
    Iterator behind(const Key& key) const noexcept { return Iterator(*this, key); }

    std::default_sentinel_t end() const noexcept { return {}; }

    // How many broken invariants the collection can see in itself. O(count).
    unsigned auditErrors(unsigned level) const {
        unsigned errors = store_.auditErrors() + objects_.auditErrors(level);
        for (const auto& [key, value] : objects_)
            if (Value other{}; store_.find(key, other)) ++errors;
        return errors;
    }

private:
    [[gnu::noinline]] const Entry* objectWith(Key key) const noexcept { return objects_.find(key); }

    mutable Store store_;
    mutable KeyedCollection<Entry> objects_;
};

// Stands on a key, or behind the last.
template <class EntryType, class Store>
class LazyCollection<EntryType, Store>::Iterator {
public:
    using value_type = std::pair<Key, Value>;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;

    explicit Iterator(const LazyCollection& collection) noexcept
        : collection_(&collection), stored_(collection.store_.first()) {
        standOnFirst(collection.objects_.first());
    }

    Iterator(const LazyCollection& collection, const Key& before) noexcept
        : collection_(&collection), stored_(collection.store_.first()), key_(before) {
        advance();
    }

    value_type operator*() const noexcept { return {key_, value()}; }

    const Key& key() const noexcept { return key_; }

    // The member's object.
    Entry* entry() const { return collection_->find(key_); }

    explicit operator bool() const noexcept { return isOnMember_; }

    void advance() noexcept {
        stored_.behind(key_);
        const auto& objects = collection_->objects_;
        standOnFirst(objects.count() != 0 ? objects.firstBehind(key_) : nullptr);
    }

    Iterator& operator++() noexcept {
        advance();
        return *this;
    }

    Iterator operator++(int) noexcept {
        Iterator old = *this;
        advance();
        return old;
    }

    bool operator==(const Iterator& other) const noexcept {
        return isOnMember_ == other.isOnMember_ && (!isOnMember_ || key_ == other.key_);
    }

    bool operator==(std::default_sentinel_t) const noexcept { return !isOnMember_; }

private:
    Value value() const noexcept {
        return stored_.isAt(key_) ? stored_.value() : collection_->value(key_);
    }

    // On what comes first: where the cursor stands, or the object.
    void standOnFirst(const Entry* object) noexcept {
        isOnMember_ = stored_ || object != nullptr;
        if (object != nullptr && (!stored_ || Store::ordersBefore(object->key(), stored_.key())))
            key_ = object->key();
        else if (stored_)
            key_ = stored_.key();
    }

    const LazyCollection* collection_ = nullptr;
    typename Store::Cursor stored_;
    Key key_{};
    bool isOnMember_ = false;
};

} // namespace Vel
