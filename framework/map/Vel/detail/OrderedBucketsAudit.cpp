// What must hold of buckets and tables: counted where it does not.
//
// Test: HashMap_test.cpp against a model.
#include <Vel/detail/OrderedBuckets.h>

namespace Vel::detail {

unsigned OrderedBuckets::auditErrors(const VTableOps& ops) const noexcept {
    U32 members = 0;
    unsigned errors = 0;
    if (root_.isTable())
        errors += auditTable(ops, root_.table(), members);
    else
        errors += auditBucket(ops, root_, 0, 0, members);
    errors += members != size_;
    Place place;
    U32 walked = 0;
    U32 beforeFold = 0;
    const MapLink* before = nullptr;
    for (const MapLink* at = first(place); at != nullptr && walked <= size_; ++walked) {
        const U32 fold = place.fold(ops, at);
        if (walked != 0)
            errors +=
                !(fold == beforeFold ? ops.isLess(before, at) : hashesBelow(beforeFold, fold));
        beforeFold = fold;
        before = at;
        at = behind(place, at);
    }
    errors += walked != size_;
    return errors;
}

unsigned OrderedBuckets::auditTable(const VTableOps& ops, const BucketTable* table,
                                    U32& members) noexcept {
    unsigned errors = table->order.auditErrors();
    U32 own = 0;
    for (U32 place = 0; place < table->count_; ++place) {
        const Bucket& bucket = table->bucketAt(place);
        const U32 fold = place << table->shift() | table->prefix();
        errors += table->place(fold) != place;
        if (bucket.isTable()) {
            const BucketTable* const child = bucket.table();
            const bool owner = table->place(child->prefix()) == place;
            errors += child->parent != table;
            errors += table->order.has(bitReverse(place)) != (owner && !child->order.empty());
            if (owner) errors += auditTable(ops, child, members);
        } else {
            errors += table->order.has(bitReverse(place)) == bucket.isEmpty();
            errors += auditBucket(ops, bucket, fold, table->depth(fold), own);
        }
    }
    members += own;
    return errors + (own != table->members);
}

unsigned OrderedBuckets::auditBucket(const VTableOps& ops, const Bucket& bucket, U32 fold,
                                     unsigned depth, U32& members) noexcept {
    unsigned errors = 0;
    U32 length = 0;
    const auto look = [&](const MapLink* at, U32 foldOfAt) {
        errors += ((foldOfAt ^ fold) & SubBuckets::lowBits(depth)) != 0;
        ++length;
        if (PlainMember::is(at)) return;
        errors += at->references() == 0;
        errors += ops.fold(at) != foldOfAt;
    };
    if (bucket.isEqual()) {
        const EqualHashes& equal = *bucket.equal();
        for (const MapLink* at = equal.head(); at != nullptr; at = at->next_)
            look(at, equal.prefix());
        if (const OrderedBuckets* const ranked = equal.ranked()) {
            ranked->visitAll([&](const MapLink* at) { look(at, equal.prefix()); });
            errors += ranked->auditErrors(equal.rankOps());
        }
        errors += equal.size() != length;
    } else {
        for (U32 seat = 0; seat < bucket.seated(); ++seat) {
            const MapLink* const at = bucket.member(seat);
            look(at, bucket.fold(seat));
            const bool isLast = seat == Bucket::seats - 1;
            const MapLink* const next = PlainMember::is(at) ? nullptr : at->next_;
            errors += (next != nullptr) != (isLast && bucket.hasMore());
            errors += PlainMember::is(at) && bucket.hasMore();
            for (const MapLink* stands = next; stands != nullptr; stands = stands->next_)
                look(stands, ops.fold(stands));
        }
        errors += bucket.hasMore() && bucket.seated() != Bucket::seats;
        errors += length != bucket.seated() + bucket.standing();
    }
    members += length;
    return errors;
}

} // namespace Vel::detail
