#include <Vel/HashMapGeneric.h>

#include <Vel/Assert.h>

namespace Vel {

using detail::VTableOps;

namespace {

// Of a map to which nobody has said what its members are.
class NoVTable final : public HashMapVTableGeneric {
public:
    constexpr NoVTable() = default;

    U32 hash(const PtrInterface*) const override { return missing(); }

    bool keyEquals(const void*, const PtrInterface*) const override { return missing() != 0; }

    bool keyLessThan(const void*, const PtrInterface*, const PtrInterface*) const override {
        return missing() != 0;
    }

    void setNext(PtrInterface*, PtrInterface*) const override { (void)missing(); }

private:
    static U32 missing() {
        VEL_ASSERT_AS("vtableIs() was called", false);
        return 0;
    }
};

constinit const NoVTable noVTable{};

} // namespace

HashMapGeneric::HashMapGeneric(unsigned initialSize, const HashMapVTableGeneric& vtable)
    : vtable_(&vtable) {
    setSize0(initialSize);
}

HashMapGeneric::HashMapGeneric(unsigned initialSize) : HashMapGeneric(initialSize, noVTable) {}

void HashMapGeneric::vtableIs(const HashMapVTableGeneric& vtable) {
    VEL_ASSERT(size() == 0, size());
    vtable_ = &vtable;
}

void HashMapGeneric::newMemberG(const Ptr<PtrInterface>& member, void* key) {
    VEL_ASSERT(vtable_->keyEquals(key, member.ptr()));
    const VTableOps ops(*vtable_);
    auto* const added = static_cast<MapLink*>(member.ptr());
    MapLink* const replaced = buckets_.add(ops, ops.fold(added), added);
    if (replaced != nullptr) replaced->referencesDec();
}

void HashMapGeneric::deleteMember(const Ptr<PtrInterface>& member) {
    if (buckets_.remove(VTableOps(*vtable_), static_cast<MapLink*>(member.ptr())))
        member->referencesDec();
}

PtrInterface* HashMapGeneric::startAtHash(const void* key, unsigned hash, int* bucket) const {
    *bucket = static_cast<int>(hash);
    const VTableOps ops(*vtable_);
    const U32 fold = bitReverse(hash);
    if (key != nullptr) {
        const auto isKey = [&](const MapLink* member) { return vtable_->keyEquals(key, member); };
        if (MapLink* const found = buckets_.find(ops, fold, key, isKey)) return found;
    }
    detail::OrderedBuckets::Place place;
    for (MapLink* at = buckets_.notBelow(ops, hash, place); at != nullptr && ops.fold(at) == fold;
         at = buckets_.next(ops, at, place))
        if (key == nullptr || vtable_->keyLessThan(key, at, nullptr)) return at;
    return nullptr;
}

PtrInterface* HashMapGeneric::findNextG(const PtrInterface* current, int* bucket) const {
    MapLink* const next = current == nullptr ? buckets_.first()
                                             : buckets_.next(VTableOps(*vtable_),
                                                             static_cast<const MapLink*>(current));
    if (next != nullptr) *bucket = static_cast<int>(vtable_->hash(next));
    return next;
}

PtrInterface* HashMapGeneric::findNextBucket(int* bucket) const {
    const U32 hash = static_cast<U32>(*bucket) + 1; // 0 behind the last of all hashes
    detail::OrderedBuckets::Place place;
    MapLink* const next = hash != 0 ? buckets_.notBelow(VTableOps(*vtable_), hash, place) : nullptr;
    if (next != nullptr) *bucket = static_cast<int>(vtable_->hash(next));
    return next;
}

void HashMapGeneric::setSize0(unsigned members) { buckets_.reserve(VTableOps(*vtable_), members); }

unsigned HashMapGeneric::auditErrors(unsigned) const {
    return buckets_.auditErrors(VTableOps(*vtable_));
}

} // namespace Vel
