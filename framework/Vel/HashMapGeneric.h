// HashMapGeneric.h - intrusive hash map whose members carry their own key and link.
//
// Owns:        one reference to each member. An empty map owns no memory.
// Cost:        find, insert and delete O(1) expected, O(log members) for any keys; an insert never pays for the whole map;
//              the first member is found without walking what is empty. detail/OrderedBuckets.h says how.
// Order:       ascending reversed hash, then keyLessThan: the members alone decide, not history. A cache table relies on it:
//              it takes the first free slot that it meets.
// Invalidates: insertion, no iterator's position; removal, only iterators that stand on the removed member.
// Threads:     no lock inside; the owner of the map serialises every call.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/detail/OrderedBuckets.h>
#include <cstddef>

namespace Vel {

class VEL_API HashMapGeneric {
public:
    // `initialSize` is how many members are expected; it reserves nothing. `vtable` outlives the map.
    HashMapGeneric(unsigned initialSize, const HashMapVTableGeneric& vtable) noexcept;
    HashMapGeneric(const HashMapGeneric&) = delete;
    HashMapGeneric& operator=(const HashMapGeneric&) = delete;
    ~HashMapGeneric() = default;

    // Inserts `member`, an object of the vtable's entry type that is in no map. No member has `*key`, its key.
    void newMemberG(const Ptr<PtrInterface>& member, void* key);
    // Removes a member and drops the map's reference to it.
    void deleteMember(const Ptr<PtrInterface>& member);

    // The first candidate of the chain in which *key is, if it is anywhere; null if there is none. `hash` is the key's hash.
    // Stores the bucket, for findNextBucket.
    PtrInterface* startAtHash(const void* key, unsigned hash, int* bucket) const;
    // The member behind `current` in the map's order, the first one for null; null at the end.
    PtrInterface* findNextG(const PtrInterface* current, int* bucket) const;
    // The first member behind the bucket; null at the end.
    PtrInterface* findNextBucket(int* bucket) const;

    // Says how many members are expected from now on; the structure needs no such hint and grows as it must.
    void setSize0(unsigned size) noexcept;

    // Removes every member.
    void emptyAllBuckets() noexcept { buckets_.clear(); }

    std::size_t size() const noexcept { return buckets_.size(); }

    // How many broken invariants the map can see in itself. O(size).
    unsigned auditErrors(unsigned level) const;

protected:
    detail::OrderedBuckets buckets_;

private:
    const HashMapVTableGeneric* vtable_;
};

} // namespace Vel
