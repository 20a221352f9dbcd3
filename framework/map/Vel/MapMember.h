// MapMember.h - a map's member that holds a key and a value and nothing else but the link.
//
//     class VelKeyToIndex final : public Vel::MapMember<DeviceOffset, U32> {
//     public:
//         using MapMember::MapMember;
//     };
//
// Key in the value: an entry whose key is a field of its value says where, and is made from the
// value alone:
//
//     class VelResourceId final : public Vel::MapMember<U64, PhysicalResourceId> {
//     public:
//         explicit VelResourceId(const PhysicalResourceId& value) : MapMember(value.id(), value) {}
//         static U64 keyOf(const PhysicalResourceId& value) { return value.id(); }
//     };
//
// Objects as members: an object that is its own member derives from MapLink, names its Key and says
// its fwkKey():
//
//     class Status : public Vel::MapLink {
//     public:
//         using Key = DalId;
//         using Value = Vel::Ptr<Status>;
//         explicit Status(DalId id);
//         DalId fwkKey() const;
//     };
// Test: KeyedCollection_test.cpp.
// ABI: layout: MapLink's, then key and value.
#pragma once

#include <Vel/MapLink.h>

namespace Vel {

template <class KeyType, class ValueType>
class MapMember : public MapLink {
public:
    using Key = KeyType;
    using Value = ValueType;

    MapMember(const Key& key, const Value& value) : key_(key), value_(value) {}

    // Fixed for the member's life.
    const Key& key() const noexcept { return key_; }

    const Key& fwkKey() const noexcept { return key_; }

    const Value& value() const noexcept { return value_; }

    // Overwrites in place. Where the key is a field of the value, the new value has the same key.
    void valueIs(const Value& value) { value_ = value; }

    // A plain member notifies nobody.
    using PlainEnd = MapMember;

    void handleZeroRef() final { delete this; }

private:
    Key key_;
    Value value_;
};

} // namespace Vel
