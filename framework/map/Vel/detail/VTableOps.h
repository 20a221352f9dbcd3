// VTableOps.h - what the buckets must know of members, asked of the map's vtable: for HashMapGeneric, and for what is so rare
// that each map's own code would only be more code.
#pragma once

#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/MapLink.h>
#include <Vel/bitReverse.h>
#include <concepts>

namespace Vel::detail {

class VTableOps {
public:
    static constexpr bool hasPlainMembers = false;
    static constexpr bool hasRanks = false; // that it knew without asking

    explicit VTableOps(const HashMapVTableGeneric& vtable) noexcept : vtable_(&vtable) {}

    // For the map of those of one hash: their ranks stand for hashes.
    static VTableOps byRank(const HashMapVTableGeneric& vtable) noexcept {
        VTableOps ops(vtable);
        ops.isByRank_ = true;
        return ops;
    }

    // What stands for other ops where each map's own code would only be more.
    template <class Ops>
    static VTableOps of(const Ops& ops) noexcept {
        if constexpr (std::same_as<Ops, VTableOps>)
            return ops;
        else
            return VTableOps(ops.vtable());
    }

    U32 fold(const MapLink* member) const {
        if (!isByRank_) return bitReverse(vtable_->hash(member));
        U32 rank = 0;
        vtable_->keyRank(nullptr, member, rank);
        return bitReverse(rank);
    }

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
    bool isByRank_ = false;
};

} // namespace Vel::detail
