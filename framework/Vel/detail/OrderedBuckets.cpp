#include <Vel/detail/OrderedBuckets.h>

#include <Vel/detail/ZeroedMemory.h>

namespace Vel::detail {

namespace {

// From here on an index costs more than it saves.
constexpr std::size_t indexedFrom = OrderedBuckets::longestChain / 2;

// An empty table is given back when it takes no walk over many buckets to forget it.
bool isOnlyWay(const BucketTable& parent, const BucketTable& child) noexcept {
    return parent.depth(child.prefix()) <= child.shift();
}

} // namespace

MapLink* OrderedBuckets::firstOf(const Bucket& bucket) noexcept {
    const Bucket* at = &bucket;
    while (at->isTable()) {
        U32 position = 0;
        if (!at->table()->order.first(position)) return nullptr;
        at = &at->table()->atPosition(position);
    }
    return at->isEqual() ? at->equal()->head() : at->head();
}

// Buckets that follow in order lie far apart, so a walk waits for memory at each. Whenever it enters a new word of bits,
// the buckets of the word after the next and the members of the next are fetched ahead.
void OrderedBuckets::fetchAhead(const BucketTable& table, U32 word) noexcept {
    table.order.visitWord(word + 2, [&](U32 at) { __builtin_prefetch(&table.atPosition(at)); });
    table.order.visitWord(word + 1,
                          [&](U32 at) { __builtin_prefetch(table.atPosition(at).head()); });
}

MapLink* OrderedBuckets::firstAfter(const BucketTable* table, U32 fold) noexcept {
    for (; table != nullptr; table = table->parent) {
        const U32 before = table->position(fold);
        U32 position = before;
        if (!table->order.after(position)) continue;
        const U32 word = table->order.wordOf(position);
        if (word != table->order.wordOf(before)) fetchAhead(*table, word);
        return firstOf(table->atPosition(position));
    }
    return nullptr;
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
            parent->at(fold) = Bucket();
            parent->childDel(table);
            dropTable(table);
        }
        table = parent;
    }
}

void OrderedBuckets::removeFromEqual(Bucket& bucket, MapLink* member) noexcept {
    EqualHashes* const equal = bucket.equal();
    const auto place = equal->places_.find(member);
    MapLink*& link = place == equal->places_.begin() ? equal->head_ : (*std::prev(place))->next_;
    link = std::exchange(member->next_, nullptr);
    equal->places_.erase(place);
    if (equal->size() > indexedFrom) return;
    bucket.chainIs(equal->head_, bucket.fold(), true);
    delete equal;
}

void OrderedBuckets::clear() noexcept {
    Bucket all = std::exchange(root_, Bucket());
    size_ = 0;
    drop(all);
}

void OrderedBuckets::drop(Bucket& bucket) noexcept {
    MapLink* at = nullptr;
    if (bucket.isTable()) {
        dropTable(bucket.table());
    } else if (bucket.isEqual()) {
        at = bucket.equal()->head();
        delete bucket.equal();
    } else {
        at = bucket.head();
    }
    while (at != nullptr) {
        MapLink* const member = std::exchange(at, at->next_);
        member->next_ = nullptr;
        member->referencesDec();
    }
}

// In the order of the buckets: members that were made one after another often lie there likewise.
void OrderedBuckets::dropTable(BucketTable* table) noexcept {
    constexpr U32 ahead = 12;
    const U32 count = table->count_;
    for (U32 place = 0; place < count; ++place) {
        if (place + ahead < count) __builtin_prefetch(table->bucketAt(place + ahead).head(), 1);
        Bucket& bucket = table->bucketAt(place);
        if (!bucket.isEmpty() && !bucket.isTable()) drop(bucket);
    }
    while (BucketTable* const child = table->firstChild) {
        table->childDel(child);
        dropTable(child);
    }
    delete table;
}

std::size_t OrderedBuckets::heapBytes() const noexcept {
    return root_.isTable() ? heapBytesOf(root_.table()) : 0;
}

std::size_t OrderedBuckets::heapBytesOf(const BucketTable* table) noexcept {
    std::size_t bytes = sizeof(BucketTable) + table->capacity_ * sizeof(Bucket);
    for (const BucketTable* child = table->firstChild; child != nullptr; child = child->nextSibling)
        bytes += heapBytesOf(child);
    return bytes;
}

} // namespace Vel::detail
