// EqualHashes.h - many members of one hash, found through a tree.
//
// Owns:  the tree. The members stay chained in the order of their keys; the tree only finds places in the chain.
// Cost:  find, insert and delete compare O(log members) keys, through the vtable.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/detail/BucketTable.h>
#include <cstddef>
#include <set>

namespace Vel::detail {

class VEL_API EqualHashes : public SubBuckets {
public:
    EqualHashes(const HashMapVTableGeneric& vtable, U32 fold);

    MapLink* head() const noexcept { return head_; }

    std::size_t size() const noexcept { return places_.size(); }

    // The member behind which one with this key belongs: the last whose key does not order behind *key. Null: before
    // all.
    MapLink* notBehind(const void* key) const;

private:
    friend class OrderedBuckets;

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

    std::set<MapLink*, Before> places_;
    MapLink* head_ = nullptr;
};

inline EqualHashes* Bucket::equal() const noexcept { return static_cast<EqualHashes*>(&sub()); }

inline void Bucket::equalIs(EqualHashes* equal) noexcept { leadIs(equal, leadsToEqual); }

} // namespace Vel::detail
