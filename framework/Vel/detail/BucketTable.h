// BucketTable.h - buckets over the bits of the fold from some bit on, as many as its members need.
//
// Place:  x = fold >> shift; a bucket lies at place x modulo the number of buckets (rounded up to a power of two, and
//         down where that place does not exist yet). Bit-reversed, the places ascend in the map's order.
// Growth: one bucket more splits one bucket, the next in turn; the array only gets longer at its end. Every place has
//         a bucket at every moment, and no step costs more than one short chain.
// Below:  a bucket may lead to a further table, or to an index of equal hashes: SubBuckets. A split that lies behind
//         the first bit of such a thing makes both halves lead to it. Only the half with the lower place then counts as
//         occupied.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/bitReverse.h>
#include <Vel/detail/BucketOrder.h>
#include <cstddef>
#include <cstdint>

namespace Vel {
class MapLink;
}

namespace Vel::detail {

class BucketTable;
class EqualHashes;

// What a bucket leads to when it is no plain chain. All its members share the bits of the fold below `shift`.
class SubBuckets {
public:
    static constexpr unsigned allBits = 32;

    SubBuckets(U32 fold, unsigned shift) noexcept : shift_(shift), prefix_(fold & lowBits(shift)) {}

    SubBuckets(const SubBuckets&) = delete;
    SubBuckets& operator=(const SubBuckets&) = delete;

    unsigned shift() const noexcept { return shift_; }

    U32 prefix() const noexcept { return prefix_; }

    // The bits in which a fold differs from what all members here share; 0: it belongs here.
    U32 differs(U32 fold) const noexcept { return (fold ^ prefix_) & lowBits(shift_); }

    static U32 lowBits(unsigned bits) noexcept {
        return bits >= allBits ? ~U32{0} : (U32{1} << bits) - 1;
    }

protected:
    ~SubBuckets() = default;

private:
    unsigned shift_;
    U32 prefix_;
};

// Nothing, a chain of members, a table or an index. A chain ascends by hash, then by key.
class Bucket {
public:
    enum class Kind : std::uintptr_t { one, many, table, equal }; // nothing: `one` at null

    Bucket() noexcept = default;

    Kind kind() const noexcept { return static_cast<Kind>(word_ & kindMask); }

    bool isEmpty() const noexcept { return word_ == 0; }

    bool isChain() const noexcept { return word_ != 0 && (word_ & 2) == 0; }

    bool isTable() const noexcept { return kind() == Kind::table; }

    bool isEqual() const noexcept { return kind() == Kind::equal; }

    // The fold of a chain's first member, or of all members of an index.
    U32 fold() const noexcept { return fold_; }

    MapLink* head() const noexcept { return static_cast<MapLink*>(target()); }

    BucketTable* table() const noexcept { return static_cast<BucketTable*>(target()); }

    inline EqualHashes* equal() const noexcept;
    inline SubBuckets* sub() const noexcept;

    void chainIs(MapLink* head, U32 fold, bool many) noexcept {
        become(head, many ? Kind::many : Kind::one, fold);
    }

    void tableIs(BucketTable* table) noexcept { become(table, Kind::table, 0); }

    void equalIs(void* equal, U32 fold) noexcept { become(equal, Kind::equal, fold); }

private:
    static constexpr std::uintptr_t kindMask = 3;

    void* target() const noexcept {
        return reinterpret_cast<void*>(word_ &
                                       ~kindMask); // NOLINT: the address with its two free bits
    }

    void become(void* target, Kind kind, U32 fold) noexcept {
        word_ = reinterpret_cast<std::uintptr_t>(target) | static_cast<std::uintptr_t>(kind);
        fold_ = fold;
    }

    std::uintptr_t word_ = 0;
    U32 fold_ = 0;
};

class VEL_API BucketTable : public SubBuckets {
public:
    // Null without memory. Makes `count` buckets, or as many as the bits from `shift` on can tell apart.
    static BucketTable* make(U32 fold, unsigned shift, U32 count) noexcept;
    ~BucketTable();

    U32 place(U32 fold) const noexcept {
        const U32 wide = fold >> shift() & wideMask_;
        return wide < count_ ? wide : wide & (wideMask_ >> 1);
    }

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

    U32 count() const noexcept { return count_; }

    // How many of a fold's bits, from bit 0 on, its bucket has used.
    unsigned depth(U32 fold) const noexcept;

    // Fewer buckets than two a member.
    bool isTight() const noexcept { return count_ / 2 < members; }

    // Throws the buckets of an empty table away and makes `count` new ones. False without memory.
    bool layOut(U32 count) noexcept;
    // Room for one bucket more; false without memory or when every bit is used.
    bool prepareSplit() noexcept;

    // Lists a table that one of the buckets leads to; the list owns it.
    void childIs(BucketTable* child) noexcept;
    void childDel(BucketTable* child) noexcept;

    BucketTable* parent = nullptr;
    BucketTable* firstChild = nullptr;
    BucketTable* nextSibling = nullptr;
    BucketTable* previousSibling = nullptr;
    U32 members = 0; // in chains and indexes of this table's own buckets
    BucketOrder order;

private:
    friend class OrderedBuckets;

    BucketTable(U32 fold, unsigned shift) noexcept : SubBuckets(fold, shift) {}

    // A walk in order steps through the places by large powers of two, which would all fall into one set of a cache.
    // So the high bits of a place stir its low bits; a place stays in its power of two, and neighbours stay together.
    static U32 indexOf(U32 place) noexcept { return place ^ ((place >> 10 ^ place >> 14) & 0xffc); }

    unsigned roundDepth() const noexcept {
        return static_cast<unsigned>(std::bit_width(wideMask_)) - 1;
    }

    Bucket* buckets_ = nullptr;
    U32 count_ = 0;
    U32 wideMask_ = 0; // 2^(n+1) - 1, where 2^n <= count_ < 2^(n+1)
    U32 capacity_ = 0;
};

} // namespace Vel::detail
