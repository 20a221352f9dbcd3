// How buckets divide and tables get their bits: rare enough for one code for all maps, which asks the vtable.
//
// Test: HashMap_test.cpp against a model.
#include <Vel/detail/OrderedBuckets.h>

#include <bit>
#include <memory>
#include <new>
#include <utility>

namespace Vel::detail {

void OrderedBuckets::divert(const VTableOps& ops, Bucket& bucket, BucketTable* table, U32 fold) {
    if (bucket.isTable() && bucket.table()->widenFor(fold)) return;
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
        before->members = old.equal()->size();
        if (table != nullptr) table->members -= before->members;
    }
    if (table != nullptr) table->childIs(before);
    bucket.tableIs(before);
    while (before->count() < 4 && split(ops, *before)) {}
}

void OrderedBuckets::divide(const VTableOps& ops, Bucket& bucket, BucketTable* table) noexcept {
    SharedBits shared;
    visit(bucket, [&](const MapLink* at) { shared.add(ops.fold(at)); });
    if (shared.bits() == SubBuckets::allBits) return index(ops, bucket, shared.fold());
    const U32 length = shared.keys();
    BucketTable* child = BucketTable::make(shared.fold(), shared.bits(),
                                           std::bit_ceil(BucketTable::bucketsFor(length)));
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

void OrderedBuckets::index(const VTableOps& ops, Bucket& bucket, U32 fold) noexcept {
    MapLink* member = chained(bucket);
    MapLink* following = nullptr;
    std::unique_ptr<EqualHashes> equal;
    try {
        equal = std::make_unique<EqualHashes>(ops.vtable(), fold, member);
        for (; member != nullptr; member = following) {
            following = std::exchange(member->next_, nullptr);
            equal->add(member);
            member->referencesDec(); // the index counts it now
        }
        bucket.equalIs(equal.release());
    } catch (const std::bad_alloc&) {
        MapLink* chain = member;
        if (equal != nullptr) {
            member->next_ = following;
            MapLink** end = &(chain = equal->takeAll());
            while (*end != nullptr) end = &(*end)->next_;
            *end = member;
        }
        seat(ops, bucket, chain);
    }
}

bool OrderedBuckets::removeFromEqual(const VTableOps& ops, Bucket& bucket,
                                     MapLink* member) noexcept {
    // From here on an index costs more than it saves.
    constexpr U32 indexedFrom = 4;
    EqualHashes* const equal = bucket.equal();
    if (!equal->remove(member)) return false;
    if (equal->size() > indexedFrom) return true;
    seat(ops, bucket, equal->takeAll());
    delete equal;
    return true;
}

// Who was in different buckets still is: each bucket has as many members as before, or fewer. So nobody who has a seat loses
// it, and plain members stay plain.
void OrderedBuckets::settle(const VTableOps& ops, BucketTable& table) noexcept {
    struct Member {
        MapLink* link;
        U32 fold;
    };

    table.awaitsMembers = false;
    if (table.firstChild != nullptr) return;
    Member all[SharedBits::enoughKeys];
    U32 positions[SharedBits::enoughKeys];
    U32 count = 0;
    U32 buckets = 0;
    SharedBits shared;
    const auto gather = [&](MapLink* link, U32 fold) {
        all[count++] = {link, fold};
        shared.add(fold);
    };
    U32 position = 0;
    for (bool found = table.order.first(position); found; found = table.order.after(position)) {
        positions[buckets++] = position;
        const Bucket& bucket = table.atPosition(position);
        if (bucket.leads()) return;
        for (U32 seat = 0; seat < bucket.seated(); ++seat)
            gather(bucket.member(seat), bucket.fold(seat));
        if (!bucket.hasMore()) continue;
        for (MapLink* at = bucket.member(Bucket::seats - 1)->next_; at != nullptr; at = at->next_)
            gather(at, ops.fold(at));
    }
    if (shared.bits() == 0 || !table.mayStartBehind(shared)) return;
    for (U32 i = 0; i < buckets; ++i) {
        Bucket& bucket = table.atPosition(positions[i]);
        if (bucket.hasMore())
            for (MapLink* at = bucket.member(Bucket::seats - 1); at != nullptr;)
                at = std::exchange(at->next_, nullptr);
        bucket.clear();
        table.order.clear(positions[i]);
    }
    table.startBehind(shared);
    for (const Member& member : all) {
        Bucket& bucket = table.at(member.fold);
        if (bucket.isEmpty()) table.order.set(table.bucketPosition(member.fold));
        addToBucket(ops, bucket, member.link, member.fold);
    }
}

} // namespace Vel::detail
