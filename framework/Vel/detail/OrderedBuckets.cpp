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
MapLink* OrderedBuckets::firstOf(const Bucket& bucket) noexcept {
    const Bucket* at = &bucket;
    while (at->isTable()) {
        const BucketTable& table = *at->table();
        U32 position = 0;
        if (!table.order.first(position)) return nullptr;
        at = &table.atPosition(position);
        if (at->seated() == 1 && table.count() > inCache) fetchAhead(table, position);
    }
    if (at->isEqual()) return at->equal()->head();
    return at->isEmpty() ? nullptr : at->member(0);
}

MapLink* OrderedBuckets::firstAfter(const BucketTable* table, U32 fold) noexcept {
    for (; table != nullptr; table = table->parent) {
        U32 position = table->position(fold);
        if (!table->order.after(position)) continue;
        if (table->count() > inCache) fetchAhead(*table, position);
        return firstOf(table->atPosition(position));
    }
    return nullptr;
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
    drop(all);
}

void OrderedBuckets::drop(Bucket& bucket) noexcept {
    if (bucket.isTable()) return dropTable(bucket.table());
    MapLink* at = nullptr;
    if (bucket.isEqual()) {
        at = bucket.equal()->head();
        delete bucket.equal();
    } else {
        if (bucket.hasMore()) at = std::exchange(bucket.member(Bucket::seats - 1)->next_, nullptr);
        for (U32 seat = 0; seat < bucket.seated(); ++seat) bucket.member(seat)->referencesDec();
    }
    while (at != nullptr) {
        MapLink* const member = std::exchange(at, at->next_);
        member->next_ = nullptr;
        member->referencesDec();
    }
}

// In the order of the buckets: members that were made one after another often lie there likewise.
void OrderedBuckets::dropTable(BucketTable* table) noexcept {
    constexpr U32 ahead = 4;
    const U32 count = table->count_;
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
    constexpr std::size_t nodeBytes = 5 * sizeof(void*); // colour, three links, value
    if (bucket.isEqual()) return sizeof(EqualHashes) + bucket.equal()->size() * nodeBytes;
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
