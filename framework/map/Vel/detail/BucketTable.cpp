#include <Vel/detail/BucketTable.h>

#include <Vel/detail/ZeroedMemory.h>
#include <new>
#include <utility>

namespace Vel::detail {

namespace {

// More buckets than this lie beyond what an address space should give to one map.
constexpr unsigned depthLimit = sizeof(void*) == 4 ? 24 : 29;

} // namespace

BucketTable* BucketTable::make(U32 fold, unsigned shift, U32 count) noexcept {
    auto* table = new (std::nothrow) BucketTable(fold, shift);
    if (table != nullptr && !table->layOut(count)) {
        delete table;
        return nullptr;
    }
    return table;
}

BucketTable::~BucketTable() { zeroedMemoryDel(buckets_, capacity_ * sizeof(Line)); }

bool BucketTable::layOut(U32 count) noexcept {
    const unsigned most = std::min(allBits - shift(), depthLimit);
    count = std::min(count, U32{1} << most);
    const U32 capacity = std::max(U32{4}, std::bit_ceil(count));
    void* buckets = zeroedMemory(capacity * sizeof(Line));
    if (buckets == nullptr) return false;
    if (!order.make(count)) {
        zeroedMemoryDel(buckets, capacity * sizeof(Line));
        return false;
    }
    zeroedMemoryDel(buckets_, capacity_ * sizeof(Line));
    buckets_ = static_cast<Line*>(buckets);
    count_ = count;
    wideMask_ = 2 * std::bit_floor(count) - 1;
    capacity_ = capacity;
    return true;
}

// Members that come in the map's own order, as a walk of another map gives them, differ in ever lower bits: each time their
// range doubles. Up to `most` buckets move for it at once, which takes a third of a millisecond; what is larger gets a table
// before it (OrderedBuckets::divert).
bool BucketTable::widenFor(U32 fold) noexcept {
    constexpr U32 most = 16384;
    constexpr U32 emptier = 4;       // than they should be
    constexpr U32 worthOfATable = 4; // buckets: what they lead to has more members than that
    const auto start = static_cast<unsigned>(std::countr_zero(differs(fold)));
    const unsigned bits = shift() - start;
    const U64 count = U64{count_} << bits;
    const U32 needed = bucketsFor(members + 1) + (firstChild != nullptr ? worthOfATable : 0);
    if (count > std::min(most, emptier * needed)) return false;
    BucketOrder wider;
    if (!growTo(static_cast<U32>(count)) || !wider.make(static_cast<U32>(count))) return false;
    const U32 low = prefix() >> start;
    // Downwards: where a bucket goes, the one that was there has moved.
    for (U32 place = count_; place-- > 0;) {
        const U32 to = place << bits | low;
        if (order.has(bitReverse(place))) wider.set(bitReverse(to));
        if (to != place) bucketAt(to) = std::exchange(bucketAt(place), Bucket());
    }
    order.swap(wider);
    startAt(fold, start);
    count_ = static_cast<U32>(count);
    wideMask_ = 2 * std::bit_floor(count_) - 1;
    return true;
}

bool BucketTable::growTo(U32 count) noexcept {
    const U32 capacity = std::bit_ceil(count);
    if (capacity <= capacity_) return true;
    void* grown = zeroedMemoryGrown(buckets_, capacity_ * sizeof(Line), capacity * sizeof(Line));
    if (grown == nullptr) return false;
    buckets_ = static_cast<Line*>(grown);
    capacity_ = capacity;
    return true;
}

bool BucketTable::prepareSplit() noexcept {
    if (roundDepth() + shift() >= allBits || roundDepth() >= depthLimit) return false;
    if (!growTo(count_ + 1)) return false;
    return order.prepareSplit(count_ & (wideMask_ >> 1));
}

void BucketTable::childIs(BucketTable* child) noexcept {
    child->parent = this;
    child->nextSibling = firstChild;
    if (firstChild != nullptr) firstChild->previousSibling = child;
    firstChild = child;
}

void BucketTable::childDel(BucketTable* child) noexcept {
    BucketTable* const before = std::exchange(child->previousSibling, nullptr);
    BucketTable* const after = std::exchange(child->nextSibling, nullptr);
    (before != nullptr ? before->nextSibling : firstChild) = after;
    if (after != nullptr) after->previousSibling = before;
    child->parent = nullptr;
}

unsigned BucketTable::depth(U32 fold) const noexcept {
    const U32 half = (wideMask_ >> 1) + 1;
    const U32 at = place(fold);
    const bool isSplit = at >= half || at < count_ - half;
    return shift() + roundDepth() + (isSplit ? 1 : 0);
}

} // namespace Vel::detail
