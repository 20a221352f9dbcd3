// VTableOps.h - what the buckets must know of members, asked of the map's vtable: for HashMapGeneric, and for what is so rare
// that each map's own code would only be more code.
#pragma once

#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/MapLink.h>
#include <Vel/bitReverse.h>

namespace Vel::detail {

class VTableOps {
public:
    static constexpr bool hasPlainMembers = false;

    explicit VTableOps(const HashMapVTableGeneric& vtable) noexcept : vtable_(&vtable) {}

    U32 fold(const MapLink* member) const { return bitReverse(vtable_->hash(member)); }

    bool isLess(const MapLink* a, const MapLink* b) const {
        return vtable_->keyLessThan(nullptr, b, a);
    }

    // Without a key at hand: neither orders before the other.
    bool isEqual(const MapLink* a, const MapLink* b) const {
        return !isLess(a, b) && !isLess(b, a);
    }

    const HashMapVTableGeneric& vtable() const noexcept { return *vtable_; }

private:
    const HashMapVTableGeneric* vtable_;
};

} // namespace Vel::detail
