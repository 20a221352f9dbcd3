#include <Vel/HashMapGeneric.h>

#include <Vel/bitReverse.h>

namespace Vel {

HashMapGeneric::HashMapGeneric(unsigned, const HashMapVTableGeneric& vtable) noexcept
    : buckets_(vtable), vtable_(&vtable) {}

void HashMapGeneric::newMemberG(const Ptr<PtrInterface>& member, void* key) {
    buckets_.insert(static_cast<MapLink&>(*member), key, bitReverse(vtable_->hash(member.ptr())));
}

void HashMapGeneric::deleteMember(const Ptr<PtrInterface>& member) {
    buckets_.remove(static_cast<MapLink&>(*member), bitReverse(vtable_->hash(member.ptr())));
}

// A bucket is named by the hash of a key in it: every hash of a chain leads to the same chain.
PtrInterface* HashMapGeneric::startAtHash(const void*, unsigned hash, int* bucket) const {
    *bucket = static_cast<int>(hash);
    return buckets_.chain(bitReverse(hash));
}

PtrInterface* HashMapGeneric::findNextG(const PtrInterface* current, int* bucket) const {
    if (current == nullptr) {
        PtrInterface* first = buckets_.first();
        if (first != nullptr) *bucket = static_cast<int>(vtable_->hash(first));
        return first;
    }
    if (MapLink* next = static_cast<const MapLink*>(current)->fwkNext()) return next;
    *bucket = static_cast<int>(vtable_->hash(current));
    return findNextBucket(bucket);
}

PtrInterface* HashMapGeneric::findNextBucket(int* bucket) const {
    PtrInterface* next = buckets_.firstBehindChain(bitReverse(static_cast<U32>(*bucket)));
    if (next != nullptr) *bucket = static_cast<int>(vtable_->hash(next));
    return next;
}

void HashMapGeneric::setSize0(unsigned) noexcept {}

unsigned HashMapGeneric::auditErrors(unsigned) const { return buckets_.auditErrors(); }

} // namespace Vel
