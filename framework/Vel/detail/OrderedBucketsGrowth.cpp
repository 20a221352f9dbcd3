// How buckets divide and tables get their bits: rare enough for one code for all maps, which asks the vtable.
#include <Vel/detail/OrderedBuckets.h>

#include <bit>
#include <new>
#include <utility>

namespace Vel::detail {

void OrderedBuckets::divert(const VTableOps& ops, Bucket& bucket, BucketTable* table, U32 fold) {
    const auto shift = static_cast<unsigned>(std::countr_zero(bucket.sub().differs(fold)));
    BucketTable* const before = BucketTable::make(fold, shift, 1);
    if (before == nullptr) throw std::bad_alloc();
    const Bucket old = bucket;
    before->bucketAt(0) = old;
    if (!isVacant(old)) before->order.set(0);
    if (old.isTable()) {
        if (table != nullptr) table->childDel(old.table());
        before->childIs(old.table());
    } else {
        before->members = static_cast<U32>(old.equal()->size());
        if (table != nullptr) table->members -= before->members;
    }
    if (table != nullptr) table->childIs(before);
    bucket.tableIs(before);
    while (before->count() < 4 && split(ops, *before)) {}
}

void OrderedBuckets::divide(const VTableOps& ops, Bucket& bucket, BucketTable* table) noexcept {
    const U32 fold = bucket.fold(0);
    U32 differ = 0;
    U32 length = 0;
    visit(bucket, [&](const MapLink* at) {
        differ |= ops.fold(at) ^ fold;
        ++length;
    });
    if (differ == 0) {
        auto* equal = new (std::nothrow) EqualHashes(ops.vtable(), fold);
        if (equal == nullptr) return;
        try {
            visit(bucket, [&](MapLink* at) { equal->places_.insert(equal->places_.end(), at); });
        } catch (const std::bad_alloc&) {
            delete equal;
            return;
        }
        equal->head_ = chained(bucket);
        bucket.equalIs(equal);
        return;
    }
    const auto shift = static_cast<unsigned>(std::countr_zero(differ));
    BucketTable* child =
        BucketTable::make(fold, shift, std::bit_ceil(BucketTable::bucketsFor(length)));
    if (child == nullptr) return;
    // In order, so members of one bucket come one after another.
    for (MapLink* run = chained(bucket); run != nullptr;) {
        const U32 place = child->place(ops.fold(run));
        MapLink* last = run;
        while (last->next_ != nullptr && child->place(ops.fold(last->next_)) == place)
            last = last->next_;
        MapLink* const following = std::exchange(last->next_, nullptr);
        seat(ops, child->bucketAt(place), run);
        child->order.set(bitReverse(place));
        run = following;
    }
    child->members = length;
    if (table != nullptr) {
        table->members -= length;
        table->childIs(child);
    }
    bucket.tableIs(child);
}

} // namespace Vel::detail
