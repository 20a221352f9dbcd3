// CollectionAccess.h - the members of a collection attribute of an object, whether it holds a
// KeyedCollection or computes its values: the same operations for both.
//
// Walks: a Position is for a walk during which nothing changes; behind() goes on from a key,
//        whatever has happened.
// Test: GenericIf_test.cpp.
#pragma once

#include <Vel/Integers.h>
#include <Vel/value/AttributeTraits.h>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace Vel {

template <class T, std::size_t index, AttributeKind kind = kindAt<T, index>>
class CollectionAccess;

template <class T, std::size_t index>
class CollectionAccess<T, index, AttributeKind::collection> {
    using Traits = AttributeTraits<T, index>;
    using Collection = typename Traits::Collection;
    static constexpr const auto& writers = attributeAt<T, index>.writer;
    static constexpr bool hasWriters = !std::is_null_pointer_v<WriterAt<T, index>>;

public:
    using Key = typename Traits::Key;
    using Value = typename Traits::Value;
    using Position = typename Collection::Iterator;

    explicit CollectionAccess(T& object) noexcept : object_(object) {}

    Value value(const Key& key) const { return collection().value(key); }

    bool has(const Key& key) const { return collection().has(key); }

    U32 count() const { return collection().count(); }

    void set(const Key& key, const Value& value) { collection().set(key, value); }

    // A value that holds its key.
    void set(const Value& value) { collection().set(value); }

    // An object that is its own member: made if it is not there yet.
    void insert(const Key& key) {
        if constexpr (hasWriters)
            std::invoke(writers.inserter, object_, key);
        else if (!has(key))
            collection().create(key);
    }

    void del(const Key& key) { (void)remove(key); }

    // The same; gives what was there: a default value, or null, where there was nothing.
    Value take(const Key& key) {
        auto removed = remove(key);
        if constexpr (std::is_same_v<decltype(removed), Value>)
            return removed;
        else
            return removed ? Value(removed->value()) : Value();
    }

    void delAll() {
        if constexpr (hasWriters)
            std::invoke(writers.emptier, object_);
        else
            collection().delAll();
    }

    Position begin() const { return collection().begin(); }

    static bool isAtEnd(const Position& position) { return !position; }

    Key keyAt(const Position& position) const { return position.key(); }

    void advance(Position& position) const { position.advance(); }

    // The first key behind this one, whether it has a member or not.
    std::optional<Key> behind(const Key& key) const {
        const Position position = collection().behind(key);
        return position ? std::optional<Key>(position.key()) : std::nullopt;
    }

private:
    Collection& collection() const noexcept { return object_.*(attributeAt<T, index>.access); }

    // Gives the member, or what a deleter of the object's own gives.
    auto remove(const Key& key) {
        if constexpr (hasWriters)
            return std::invoke(writers.deleter, object_, key);
        else
            return collection().del(key);
    }

    T& object_;
};

template <class T, std::size_t index>
class CollectionAccess<T, index, AttributeKind::keyed> {
    using Traits = AttributeTraits<T, index>;
    static constexpr const auto& access = attributeAt<T, index>.access;

public:
    using Key = typename Traits::Key;
    using Value = typename Traits::Value;
    using Position = Key; // Key::null() behind the last

    explicit CollectionAccess(T& object) noexcept : object_(object) {}

    Value value(const Key& key) const { return std::invoke(access.reader, object_, key); }

    bool has(const Key& key) const { return static_cast<bool>(value(key)); }

    U32 count() const { return std::invoke(access.counter, object_); }

    void set(const Key& key, const Value& value) {
        std::invoke(access.writer, object_, key, value);
    }

    void del(const Key& key) { (void)take(key); }

    // The same; says what was there.
    Value take(const Key& key) { return std::invoke(access.deleter, object_, key); }

    void delAll() {
        for (Position at = begin(); !isAtEnd(at); advance(at)) del(at);
    }

    Position begin() const { return std::invoke(access.next, object_, Key(Key::null())); }

    static bool isAtEnd(const Position& position) { return position == Key(Key::null()); }

    Key keyAt(const Position& position) const { return position; }

    void advance(Position& position) const {
        position = std::invoke(access.next, object_, position);
    }

    std::optional<Key> behind(const Key& key) const {
        Position position = key;
        advance(position);
        return isAtEnd(position) ? std::nullopt : std::optional<Key>(position);
    }

private:
    T& object_;
};

} // namespace Vel
