#include <Vel/detail/OrderedBuckets.h>

#include <Vel/detail/ZeroedMemory.h>

namespace Vel::detail {

namespace {

// So few buckets need not be fetched ahead.
constexpr U32 inCache = 256;

// An empty table is given back when it takes no walk over many buckets to forget it.
bool isOnlyWay(const BucketTable& parent, const BucketTable& child) noexcept {
    return parent.depth(child.prefix()) <= child.shift();
}

} // namespace

// Buckets that follow in order lie far apart, and so do their members: a walk would wait for memory at each. So what it
// comes to soon is fetched ahead: a bucket first, its members when it has arrived. Always inline: to GCC a function that
// only fetches has no effect, and it drops the calls.
[[gnu::always_inline]] inline void OrderedBuckets::fetchAhead(const BucketTable& table,
                                                              U32 position) noexcept {
    constexpr U32 bucketsAhead = 16;
    constexpr U32 membersAhead = 8;
    const U32 step = table.positionStep();
    __builtin_prefetch(&table.covering(position + bucketsAhead * step));
    const Bucket& soon = table.covering(position + membersAhead * step);
    for (U32 seat = 0; seat < soon.seated(); ++seat) __builtin_prefetch(soon.member(seat));
}

// Who takes the first member again and again is served like a walk: before a bucket runs out, those behind it come.
MapLink* OrderedBuckets::firstHere(Place& place) const noexcept {
    while (place.bucket_->isTable()) {
        const BucketTable& table = *place.bucket_->table();
        if (!table.order.first(place.position_)) return nullptr;
        place.run_ = table.order.behind(place.position_);
        place.table_ = &table;
        place.bucket_ = &table.atPosition(place.position_);
        if (place.bucket_->seated() == 1 && table.count() > inCache)
            fetchAhead(table, place.position_);
    }
    if (place.bucket_->isEqual()) return firstInside(place);
    place.changes_ = changes_;
    place.seat_ = 0;
    return place.bucket_->isEmpty() ? nullptr : place.bucket_->member(0);
}

// From there the walk goes through the map of ranks as through this one: its tables lead no further than to its root.
MapLink* OrderedBuckets::firstInside(Place& place) const noexcept {
    const EqualHashes& equal = *place.bucket_->equal();
    if (const OrderedBuckets* const ranked = equal.ranked()) {
        place = Place();
        place.inside_ = &equal;
        place.bucket_ = &ranked->root_;
        return firstHere(place);
    }
    place.changes_ = changes_;
    place.seat_ = Bucket::seats;
    return equal.head();
}

void OrderedBuckets::locateInside(const MapLink* member, Place& place) const noexcept {
    const EqualHashes& equal = *place.bucket_->equal();
    if (const OrderedBuckets* const ranked = equal.ranked()) {
        ranked->locate(equal.rankOps(), member, place);
        place.inside_ = &equal;
        place.changes_ = changes_;
    } else {
        place.seat_ = Bucket::seats;
    }
}

bool OrderedBuckets::nextOccupied(const BucketTable& table, Place& place) noexcept {
    if (!place.run_.empty()) {
        place.position_ = place.run_.next();
        return true;
    }
    if (!table.order.after(place.position_)) return false;
    place.run_ = table.order.behind(place.position_);
    return true;
}

MapLink* OrderedBuckets::firstAfter(Place& place) const noexcept {
    while (place.table_ != nullptr) {
        const BucketTable& table = *place.table_;
        if (nextOccupied(table, place)) {
            if (table.count() > inCache) fetchAhead(table, place.position_);
            place.bucket_ = &table.atPosition(place.position_);
            return firstHere(place);
        }
        place.table_ = table.parent;
        place.run_ = {};
        if (table.parent != nullptr) place.position_ = table.parent->position(table.prefix());
    }
    if (place.inside_ == nullptr) return nullptr;
    locate(place.inside_->prefix(), place);
    return firstAfter(place);
}

MapLink* OrderedBuckets::behindSeats(Place& place, const MapLink* member) const noexcept {
    if (!PlainMember::is(member) && member->next_ != nullptr) {
        place.seat_ = Bucket::seats;
        return member->next_;
    }
    return firstAfter(place);
}

MapLink* OrderedBuckets::chained(const Bucket& bucket) noexcept {
    for (U32 seat = 1; seat < bucket.seated(); ++seat)
        bucket.member(seat - 1)->next_ = bucket.member(seat);
    return bucket.isEmpty() ? nullptr : bucket.member(0);
}

// The first member of an empty table makes the bucket that leads to it occupied, too.
void OrderedBuckets::occupied(BucketTable* table, U32 fold) noexcept {
    for (; table != nullptr; fold = table->prefix(), table = table->parent) {
        const bool wasEmpty = table->order.empty();
        table->order.set(table->bucketPosition(fold));
        if (!wasEmpty) return;
    }
}

void OrderedBuckets::vacated(BucketTable* table, U32 fold) noexcept {
    for (;;) {
        table->order.clear(table->bucketPosition(fold));
        BucketTable* const parent = table->parent;
        if (!table->order.empty() || parent == nullptr) return;
        fold = table->prefix();
        if (isOnlyWay(*parent, *table)) {
            parent->order.clear(parent->bucketPosition(fold));
            parent->at(fold).clear();
            parent->childDel(table);
            dropTable(table);
        }
        table = parent;
    }
}

void OrderedBuckets::clear() noexcept {
    Bucket all = std::exchange(root_, Bucket());
    size_ = 0;
    ++changes_;
    drop(all);
}

void OrderedBuckets::drop(Bucket& bucket) noexcept {
    if (bucket.isTable()) return dropTable(bucket.table());
    if (bucket.isEqual()) {
        delete bucket.equal();
        return;
    }
    MapLink* at = bucket.hasMore() ? std::exchange(bucket.member(Bucket::seats - 1)->next_, nullptr)
                                   : nullptr;
    for (U32 seat = 0; seat < bucket.seated(); ++seat)
        if (MapLink* const member = bucket.member(seat); !PlainMember::is(member))
            member->referencesDec();
    while (at != nullptr) {
        MapLink* const member = std::exchange(at, at->next_);
        member->next_ = nullptr;
        member->referencesDec();
    }
}

// In the order of the buckets: members that were made one after another often lie there likewise.
void OrderedBuckets::dropTable(BucketTable* table) noexcept {
    constexpr U32 ahead = 4;
    const U32 count = table->members != 0 ? table->count_ : 0;
    for (U32 place = 0; place < count; ++place) {
        if (place + ahead < count) {
            const Bucket& soon = table->bucketAt(place + ahead);
            for (U32 seat = 0; seat < soon.seated(); ++seat)
                __builtin_prefetch(soon.member(seat), 1);
        }
        Bucket& bucket = table->bucketAt(place);
        if (!bucket.isTable()) drop(bucket);
    }
    while (BucketTable* const child = table->firstChild) {
        table->childDel(child);
        dropTable(child);
    }
    delete table;
}

std::size_t OrderedBuckets::heapBytes() const noexcept { return heapBytesOf(root_); }

std::size_t OrderedBuckets::heapBytesOf(const Bucket& bucket) noexcept {
    if (bucket.isEqual()) return bucket.equal()->heapBytes();
    if (!bucket.isTable()) return 0;
    const BucketTable& table = *bucket.table();
    std::size_t bytes = table.heapBytes();
    for (U32 place = 0; place < table.count(); ++place) {
        const Bucket& at = table.bucketAt(place);
        // Several may lead to one table: the lowest counts.
        if (!at.isTable() || table.place(at.sub().prefix()) == place) bytes += heapBytesOf(at);
    }
    return bytes;
}

} // namespace Vel::detail
