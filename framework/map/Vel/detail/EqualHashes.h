// EqualHashes.h - many members of one hash.
//
// Found:  by rank, where their keys have one (keyRank()): a map of their ranks, like any other. Else through a tree; members
//         then stand chained in the order of their keys, and the tree only finds places in the chain.
// Owns:   what finds them; counts each member once.
// Cost:   find, insert and delete O(1) expected by rank; else they compare O(log members) keys, through the vtable.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/detail/BucketTable.h>
#include <Vel/detail/VTableOps.h>
#include <cstddef>
#include <memory>
#include <set>

namespace Vel::detail {

class OrderedBuckets;

class VEL_API EqualHashes : public SubBuckets {
public:
    // For members of this fold, like `member`. Throws std::bad_alloc.
    EqualHashes(const HashMapVTableGeneric& vtable, U32 fold, const MapLink* member);
    // Drops every member.
    ~EqualHashes();

    // The map of ranks; null where there are none.
    const OrderedBuckets* ranked() const noexcept { return ranked_.get(); }

    // What the map of ranks asks of members.
    VTableOps rankOps() const noexcept { return VTableOps::byRank(vtable()); }

    // The chain, where there are no ranks.
    MapLink* head() const noexcept { return head_; }

    U32 size() const noexcept;

    // The only member that may have this key; null where none may.
    MapLink* find(const void* key) const;

    // Counts the member up and places it. One of equal key gives way: it is returned, still counted. Throws std::bad_alloc
    // and changes nothing.
    MapLink* add(MapLink* member);

    // Takes the member out, still counted. False when it is not here.
    bool remove(MapLink* member) noexcept;

    // Takes all members out, still counted: a chain in their order.
    MapLink* takeAll() noexcept;

    std::size_t heapBytes() const noexcept;

private:
    struct Before {
        using is_transparent = void;

        const HashMapVTableGeneric* vtable;

        bool operator()(const MapLink* a, const MapLink* b) const {
            return vtable->keyLessThan(nullptr, b, a);
        }

        bool operator()(const void* key, const MapLink* a) const {
            return vtable->keyLessThan(key, a, nullptr);
        }
    };

    using Tree = std::set<MapLink*, Before>;

    const HashMapVTableGeneric& vtable() const noexcept { return *tree_.key_comp().vtable; }

    // What leads to the member at a place of the chain.
    MapLink*& linkTo(Tree::iterator place) noexcept;

    std::unique_ptr<OrderedBuckets> ranked_;
    Tree tree_;
    MapLink* head_ = nullptr;
};

inline EqualHashes* Bucket::equal() const noexcept { return static_cast<EqualHashes*>(&sub()); }

inline void Bucket::equalIs(EqualHashes* equal) noexcept { leadIs(equal, leadsToEqual); }

} // namespace Vel::detail
