// CollectionAttribute.h - a keyed collection attribute of a class in one declaration.
//
//     class NET_API Table : public Vel::PtrInterface {
//     public:
//         // How much each peer weighs.
//         VEL_COLLECTION(NET_API, weight, Weight, Vel::U16, Vel::U32);
//         static constexpr auto schema();   // ….collection(131, "weight", &Table::weight_)
//
//     private:
//         Weight weight_;
//     };
//
// Declares the member's class VelWeight, the collection's type Weight, and, of a weight under a key
// of 16 bits:
//
//     const Weight& weight() const      for (const auto& [key, value] : table.weight())
//     U32 weight(key) const             the value, or a default one where there is none
//     U32 weights() const               how many there are
//     Ptr<VelWeight> newWeight(key, value)      for a key that is not there yet
//     void weightIs(key, value)         overwrites in place, the member stays; or makes one
//     void weightDel(key)               an absent key changes nothing
//     void weightDel(Weight::Iterator&) removes the member on which it stands; it goes on to the
//     next void weightDelAll() void weightNotify(key)            nothing: nobody listens
//
// Macros:     because the names of the functions are made of the attribute's. What they do is
//             KeyedCollection's.
// Key inside: VEL_COLLECTION_BY(API, peer, Peer, Port, Endpoint, port) is the same for values that
//             have their key in them, value.port(); newPeer(value) and peerIs(value) take it from
//             there.
// Parts:      a class that does some of this its own way declares the collection's type itself and
//             takes VEL_COLLECTION_READERS(weight, Weight), the first three, and
//             VEL_COLLECTION_WRITERS(weight, Weight), those that need neither make a member nor
//             give back a removed one: weightIs(), weightDel(iterator), weightDelAll() and
//             weightNotify().
// Arguments:  a small plain value is passed as it is, any other by reference: Argument.
#pragma once

#include <Vel/Integers.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/Ptr.h>
#include <type_traits>

namespace Vel {

// How an attribute's function takes a key or a value. The same in both word sizes.
template <class T>
using Argument =
    std::conditional_t<std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(U32), T, const T&>;

} // namespace Vel

#define VEL_COLLECTION(API, attribute, Attribute, KeyType, ValueType)                              \
    class API Vel##Attribute final : public ::Vel::MapMember<KeyType, ValueType> {                 \
    public:                                                                                        \
        using MapMember::MapMember;                                                                \
    };                                                                                             \
    using Attribute = ::Vel::KeyedCollection<Vel##Attribute>;                                      \
    VEL_COLLECTION_READERS(attribute, Attribute);                                                  \
    VEL_COLLECTION_WRITERS(attribute, Attribute);                                                  \
    VEL_COLLECTION_DELETER(attribute, Attribute);                                                  \
    ::Vel::Ptr<Vel##Attribute> new##Attribute(::Vel::Argument<KeyType> key,                        \
                                              ::Vel::Argument<ValueType> value) {                  \
        return attribute##_.create(key, value);                                                    \
    }                                                                                              \
    static_assert(true)

#define VEL_COLLECTION_BY(API, attribute, Attribute, KeyType, ValueType, field)                    \
    class API Vel##Attribute final : public ::Vel::MapMember<KeyType, ValueType> {                 \
    public:                                                                                        \
        explicit Vel##Attribute(const ValueType& value) : MapMember(keyOf(value), value) {}        \
        static KeyType keyOf(const ValueType& value) noexcept { return value.field(); }            \
    };                                                                                             \
    using Attribute = ::Vel::KeyedCollection<Vel##Attribute>;                                      \
    VEL_COLLECTION_READERS(attribute, Attribute);                                                  \
    VEL_COLLECTION_EMPTIERS(attribute, Attribute);                                                 \
    VEL_COLLECTION_DELETER(attribute, Attribute);                                                  \
    ::Vel::Ptr<Vel##Attribute> new##Attribute(::Vel::Argument<ValueType> value) {                  \
        return attribute##_.create(value);                                                         \
    }                                                                                              \
    void attribute##Is(::Vel::Argument<ValueType> value) { attribute##_.set(value); }              \
    static_assert(true)

#define VEL_COLLECTION_READERS(attribute, Attribute)                                               \
    const Attribute& attribute() const noexcept { return attribute##_; }                           \
    Attribute::Value attribute(::Vel::Argument<Attribute::Key> key) const {                        \
        return attribute##_.value(key);                                                            \
    }                                                                                              \
    ::Vel::U32 attribute##s() const noexcept { return attribute##_.count(); }                      \
    static_assert(true)

#define VEL_COLLECTION_WRITERS(attribute, Attribute)                                               \
    void attribute##Is(::Vel::Argument<Attribute::Key> key,                                        \
                       ::Vel::Argument<Attribute::Value> value) {                                  \
        attribute##_.set(key, value);                                                              \
    }                                                                                              \
    VEL_COLLECTION_EMPTIERS(attribute, Attribute)

// Parts of the above.
#define VEL_COLLECTION_EMPTIERS(attribute, Attribute)                                              \
    void attribute##Del(Attribute::Iterator& position) { attribute##_.del(position); }             \
    void attribute##DelAll() noexcept { attribute##_.delAll(); }                                   \
    void attribute##Notify(::Vel::Argument<Attribute::Key>) noexcept {}                            \
    static_assert(true)
#define VEL_COLLECTION_DELETER(attribute, Attribute)                                               \
    void attribute##Del(::Vel::Argument<Attribute::Key> key) { attribute##_.del(key); }            \
    static_assert(true)
