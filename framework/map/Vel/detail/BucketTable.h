// BucketTable.h - buckets over the bits of the fold from some bit on, as many as its members need.
//
// Place:  x = fold >> shift; a bucket lies at place x modulo the number of buckets (rounded up to a power of two, and
//         down where that place does not exist yet). Bit-reversed, the places ascend in the map's order.
// Growth: one bucket more splits one bucket, the next in turn; the array only gets longer at its end. Every place has
//         a bucket at every moment, and no step costs more than one short chain.
// Below:  a bucket may lead to a further table, or to an index of equal hashes: SubBuckets. A split that lies behind
//         the first bit of such a thing makes both halves lead to it. Only the half with the lower place then counts as
//         occupied.
// Test: HashMap_test.cpp against a model.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/SharedBits.h>
#include <Vel/bitReverse.h>
#include <Vel/detail/Bucket.h>
#include <Vel/detail/BucketOrder.h>
#include <algorithm>
#include <bit>
#include <cstddef>

namespace Vel::detail {

class VEL_API BucketTable : public SubBuckets {
public:
    // Null without memory. Makes `count` buckets, or as many as the bits from `shift` on can tell apart.
    static BucketTable* make(U32 fold, unsigned shift, U32 count) noexcept;
    ~BucketTable();

    U32 place(U32 fold) const noexcept { return existing(fold >> shift() & wideMask_); }

    Bucket& at(U32 fold) noexcept { return bucketAt(place(fold)); }

    const Bucket& at(U32 fold) const noexcept { return bucketAt(place(fold)); }

    Bucket& bucketAt(U32 place) noexcept { return buckets_[indexOf(place)]; }

    const Bucket& bucketAt(U32 place) const noexcept { return buckets_[indexOf(place)]; }

    // Where the fold's bucket stands in the order; a fold's own position lies in its bucket's range.
    U32 bucketPosition(U32 fold) const noexcept { return bitReverse(place(fold)); }

    U32 position(U32 fold) const noexcept { return bitReverse(fold >> shift()); }

    // The bucket at a position that `order` gave.
    Bucket& atPosition(U32 position) noexcept { return bucketAt(bitReverse(position)); }

    const Bucket& atPosition(U32 position) const noexcept { return bucketAt(bitReverse(position)); }

    // The bucket that covers a position, any position.
    const Bucket& covering(U32 position) const noexcept {
        return bucketAt(existing(bitReverse(position)));
    }

    U32 count() const noexcept { return count_; }

    // The step from a position to the next where every bucket is split.
    U32 positionStep() const noexcept { return bitReverse(wideMask_ ^ wideMask_ >> 1); }

    // How many of a fold's bits, from bit 0 on, its bucket has used.
    unsigned depth(U32 fold) const noexcept;

    // How many buckets so many members should have: they fill half of the seats.
    static U32 bucketsFor(U32 members) noexcept {
        return static_cast<U32>((U64{members} * 2 + Bucket::seats - 1) / Bucket::seats);
    }

    // Whether the members fill half of the seats of `spare` buckets more than there are.
    bool isTight(U32 spare) const noexcept {
        return U64{members} * 2 > U64{count_ + spare} * Bucket::seats;
    }

    // Throws the buckets of an empty table away and makes `count` new ones. False without memory.
    bool layOut(U32 count) noexcept;
    // Lets a table that is still small begin at a lower bit, where this fold differs from what all members share: each bucket
    // becomes one of several, the others are empty. False when that would be too many, or without memory.
    bool widenFor(U32 fold) noexcept;
    // Room for one bucket more; false without memory or when every bit is used.
    bool prepareSplit() noexcept;

    // What the table holds, and itself, without what its buckets lead to.
    std::size_t heapBytes() const noexcept {
        return sizeof(*this) + capacity_ * sizeof(Line) + order.heapBytes();
    }

    // Nobody is here: lets the buckets go over the bits that `shared` does not share, or over as many below as they need.
    void startBehind(const SharedBits& shared) noexcept {
        const auto needed = static_cast<unsigned>(std::bit_width(count_ - 1));
        startAt(shared.fold(), std::min(shared.bits(), allBits - needed));
    }

    // Whether the first few keys tell that the others share these bits, too. A walk of another map gives its keys in an order
    // in which the first 64 share low bits whatever the others are: all but the highest six.
    bool mayStartBehind(const SharedBits& shared) const noexcept {
        return shared.bits() + 7 < static_cast<unsigned>(std::bit_width(count_));
    }

    // Lists a table that one of the buckets leads to; the list owns it.
    void childIs(BucketTable* child) noexcept;
    void childDel(BucketTable* child) noexcept;

    BucketTable* parent = nullptr;
    BucketTable* firstChild = nullptr;
    BucketTable* nextSibling = nullptr;
    BucketTable* previousSibling = nullptr;
    U32 members = 0;            // in chains and indexes of this table's own buckets
    bool awaitsMembers = false; // before it settles which bits it goes over
    BucketOrder order;

private:
    friend class OrderedBuckets;

    BucketTable(U32 fold, unsigned shift) noexcept : SubBuckets(fold, shift) {}

    struct alignas(64) Line : Bucket {}; // one line of the cache

    // A walk in order steps through the places by large powers of two, which would all fall into one set of a cache.
    // So the high bits of a place stir its low bits; a place stays in its power of two.
    static U32 indexOf(U32 place) noexcept { return place ^ place >> 13; }

    // Without a branch: half of all places would be guessed wrong.
    U32 existing(U32 place) const noexcept {
        return place & (wideMask_ >> 1 | (0 - U32{place < count_}));
    }

    unsigned roundDepth() const noexcept {
        return static_cast<unsigned>(std::bit_width(wideMask_)) - 1;
    }

    // Room for so many buckets. False without memory.
    bool growTo(U32 count) noexcept;

    Line* buckets_ = nullptr;
    U32 count_ = 0;
    U32 wideMask_ = 0; // 2^(n+1) - 1, where 2^n <= count_ < 2^(n+1)
    U32 capacity_ = 0;
};

inline BucketTable* Bucket::table() const noexcept { return static_cast<BucketTable*>(&sub()); }

inline void Bucket::tableIs(BucketTable* table) noexcept { leadIs(table, leadsToTable); }

} // namespace Vel::detail
