// OrderedBuckets.h - the members of a map in their order: what HashMapGeneric and HashMap both stand on.
//
// Shape:   a map is one bucket. Up to eight members are a chain; more become a table (BucketTable), and a chain in a
//          table that outgrows eight becomes a table of its own, over the bits in which its members differ. Members
//          that differ in no bit get an index (EqualHashes). So neither strides nor hostile keys make a long chain.
// Order:   ascending reversed hash, then keyLessThan, whatever the shape.
// Counts:  each member here is counted once; links move without touching counts.
// Ops:     every algorithm is a template over what it must know of members: fold(member), isLess(a, b) and
//          isEqual(a, b) for members of one fold, vtable(). HashMap passes inlined code, HashMapGeneric its vtable.
// Errors:  without memory growth waits and chains get longer. Only where a member finds no place at all without memory
//          add() throws std::bad_alloc, and nothing has changed.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/KeyHash.h>
#include <Vel/MapLink.h>
#include <Vel/detail/BucketTable.h>
#include <Vel/detail/EqualHashes.h>
#include <new>
#include <utility>

namespace Vel::detail {

class VEL_API OrderedBuckets {
public:
    static constexpr U32 longestChain = 8;

    OrderedBuckets() noexcept = default;
    OrderedBuckets(const OrderedBuckets&) = delete;
    OrderedBuckets& operator=(const OrderedBuckets&) = delete;

    ~OrderedBuckets() { clear(); }

    U32 size() const noexcept { return size_; }

    // Counts the member up and places it. A member of equal key gives way: it is returned, still counted, in no map.
    template <class Ops>
    MapLink* add(const Ops& ops, MapLink* member);

    // Takes the member out, still counted. False when it is not here.
    template <class Ops>
    bool remove(const Ops& ops, MapLink* member) noexcept;

    // The member of this fold for which isKey(member) holds, or null. `key` is what isKey looks for.
    template <class IsKey>
    MapLink* find(U32 fold, const void* key, const IsKey& isKey) const noexcept;

    MapLink* first() const noexcept { return firstOf(root_); }

    template <class Ops>
    MapLink* next(const Ops& ops, const MapLink* member) const noexcept;

    // The first member whose hash is not below `hash`.
    template <class Ops>
    MapLink* notBelow(const Ops& ops, U32 hash) const noexcept;

    // Room for so many members; an empty map gives back what it had beyond that. Throws std::bad_alloc and changes
    // nothing.
    template <class Ops>
    void reserve(const Ops& ops, U32 members);

    // Drops every member; the map is empty before the first of them learns of it.
    void clear() noexcept;

    template <class Ops>
    unsigned auditErrors(const Ops& ops) const noexcept;

    // What the map holds besides its members, in bytes.
    std::size_t heapBytes() const noexcept;

private:
    static MapLink* firstOf(const Bucket& bucket) noexcept;
    // The first member behind the range of `fold`'s bucket in `table`.
    static MapLink* firstAfter(const BucketTable* table, U32 fold) noexcept;
    static void fetchAhead(const BucketTable& table, U32 word) noexcept;
    static void drop(Bucket& bucket) noexcept;
    static void dropTable(BucketTable* table) noexcept;
    static std::size_t heapBytesOf(const BucketTable* table) noexcept;

    void occupied(BucketTable* table, U32 fold) noexcept;
    void vacated(BucketTable* table, U32 fold) noexcept;
    // Puts a table before what the bucket leads to, so that `fold` finds a place beside it.
    template <class Ops>
    void divert(const Ops& ops, Bucket& bucket, BucketTable* table, U32 fold);
    template <class Ops>
    MapLink* addToChain(const Ops& ops, Bucket& bucket, BucketTable* table, MapLink* member,
                        U32 fold) noexcept;
    template <class Ops>
    static MapLink* addToEqual(const Ops& ops, EqualHashes& equal, MapLink* member);
    static void removeFromEqual(Bucket& bucket, MapLink* member) noexcept;
    // Makes a table or an index of a long chain.
    template <class Ops>
    void divide(const Ops& ops, Bucket& bucket, BucketTable* table) noexcept;
    template <class Ops>
    static bool split(const Ops& ops, BucketTable& table) noexcept;
    template <class Ops>
    static void splitChain(const Ops& ops, BucketTable& table, Bucket& from, Bucket& to,
                           U32 bit) noexcept;
    template <class Ops>
    static unsigned auditTable(const Ops& ops, const BucketTable* table, U32& members) noexcept;
    template <class Ops>
    static unsigned auditBucket(const Ops& ops, const Bucket& bucket, U32 fold, unsigned depth,
                                U32& members) noexcept;

    Bucket root_;
    U32 size_ = 0;
};

// ---------------------------------------------------------------------------------- looking up

template <class IsKey>
MapLink* OrderedBuckets::find(U32 fold, const void* key, const IsKey& isKey) const noexcept {
    const Bucket* bucket = &root_;
    while (bucket->isTable()) bucket = &bucket->table()->at(fold);
    if (bucket->kind() == Bucket::Kind::one) [[likely]] {
        MapLink* const only = bucket->head();
        return only != nullptr && bucket->fold() == fold && isKey(only) ? only : nullptr;
    }
    if (bucket->kind() == Bucket::Kind::many) {
        if (hashesBelow(fold, bucket->fold())) return nullptr;
        for (MapLink* at = bucket->head(); at != nullptr; at = at->next_)
            if (isKey(at)) return at;
        return nullptr;
    }
    if (bucket->fold() != fold) return nullptr;
    MapLink* const place = bucket->equal()->notBehind(key);
    return place != nullptr && isKey(place) ? place : nullptr;
}

template <class Ops>
MapLink* OrderedBuckets::next(const Ops& ops, const MapLink* member) const noexcept {
    if (member->next_ != nullptr) return member->next_;
    const U32 fold = ops.fold(member);
    const BucketTable* table = nullptr;
    for (const Bucket* bucket = &root_; bucket->isTable(); bucket = &table->at(fold))
        table = bucket->table();
    return firstAfter(table, fold);
}

template <class Ops>
MapLink* OrderedBuckets::notBelow(const Ops& ops, U32 hash) const noexcept {
    const U32 fold = bitReverse(hash);
    const BucketTable* table = nullptr;
    const Bucket* bucket = &root_;
    while (bucket->isTable() && bucket->table()->differs(fold) == 0) {
        table = bucket->table();
        bucket = &table->at(fold);
    }
    if (bucket->isChain()) {
        for (MapLink* at = bucket->head(); at != nullptr; at = at->next_)
            if (!hashesBelow(ops.fold(at), fold)) return at;
    } else if (!bucket->isEmpty()) {
        if (!hashesBelow(bucket->sub()->prefix(), fold))
            if (MapLink* const found = firstOf(*bucket)) return found;
    }
    return firstAfter(table, fold);
}

// ---------------------------------------------------------------------------------- adding

template <class Ops>
MapLink* OrderedBuckets::add(const Ops& ops, MapLink* member) {
    const U32 fold = ops.fold(member);
    BucketTable* table = nullptr;
    Bucket* bucket = &root_;
    for (;;) {
        if (bucket->isTable()) {
            if (bucket->table()->differs(fold) != 0) divert(ops, *bucket, table, fold);
            table = bucket->table();
            bucket = &table->at(fold);
        } else if (bucket->isEqual() && bucket->fold() != fold) {
            divert(ops, *bucket, table, fold);
        } else {
            break;
        }
    }
    MapLink* replaced = nullptr;
    if (bucket->isEmpty()) {
        bucket->chainIs(member, fold, false);
        occupied(table, fold);
    } else if (bucket->isEqual()) {
        replaced = addToEqual(ops, *bucket->equal(), member);
    } else {
        replaced = addToChain(ops, *bucket, table, member, fold);
    }
    member->referencesInc();
    if (replaced != nullptr) return replaced;
    ++size_;
    if (table == nullptr) return nullptr;
    // A chain that has just become a table of its own took its members along.
    if (!bucket->isTable()) ++table->members;
    constexpr U32 batch = 8;
    if (table->count() + batch <= 2 * table->members) {
        for (U32 left = 2 * batch; left > 0 && table->isTight(); --left)
            if (!split(ops, *table)) break;
    }
    return nullptr;
}

template <class Ops>
MapLink* OrderedBuckets::addToChain(const Ops& ops, Bucket& bucket, BucketTable* table,
                                    MapLink* member, U32 fold) noexcept {
    MapLink* before = nullptr;
    MapLink* at = bucket.head();
    U32 atFold = bucket.fold();
    U32 passed = 0;
    MapLink* replaced = nullptr;
    for (;;) {
        if (atFold == fold) {
            if (ops.isEqual(member, at)) {
                replaced = at;
                break;
            }
            if (ops.isLess(member, at)) break;
        } else if (hashesBelow(fold, atFold)) {
            break;
        }
        ++passed;
        before = at;
        at = at->next_;
        if (at == nullptr) break;
        atFold = ops.fold(at);
    }
    if (replaced != nullptr) {
        member->next_ = std::exchange(replaced->next_, nullptr);
        at = member->next_;
    } else {
        member->next_ = at;
    }
    if (before != nullptr)
        before->next_ = member;
    else
        bucket.chainIs(member, fold, false);
    const bool many = before != nullptr || at != nullptr;
    bucket.chainIs(bucket.head(), bucket.fold(), many);
    if (replaced != nullptr) return replaced;
    U32 length = passed + 1;
    for (; at != nullptr; at = at->next_) ++length;
    if (length > longestChain) divide(ops, bucket, table);
    return nullptr;
}

template <class Ops>
MapLink* OrderedBuckets::addToEqual(const Ops& ops, EqualHashes& equal, MapLink* member) {
    const auto behind = equal.places_.lower_bound(member);
    if (behind != equal.places_.end() && ops.isEqual(member, *behind)) {
        MapLink* const replaced = *behind;
        MapLink*& link =
            behind == equal.places_.begin() ? equal.head_ : (*std::prev(behind))->next_;
        link = member;
        member->next_ = std::exchange(replaced->next_, nullptr);
        const_cast<MapLink*&>(*behind) = member; // equal keys: the tree's order stands
        return replaced;
    }
    const auto place = equal.places_.insert(behind, member); // may throw: nothing has changed
    MapLink*& link = place == equal.places_.begin() ? equal.head_ : (*std::prev(place))->next_;
    member->next_ = std::exchange(link, member);
    return nullptr;
}

template <class Ops>
void OrderedBuckets::divide(const Ops& ops, Bucket& bucket, BucketTable* table) noexcept {
    U32 differ = 0;
    U32 length = 0;
    for (MapLink* at = bucket.head(); at != nullptr; at = at->next_, ++length)
        differ |= ops.fold(at) ^ bucket.fold();
    if (differ == 0) {
        auto* equal = new (std::nothrow) EqualHashes(ops.vtable(), bucket.fold());
        if (equal == nullptr) return;
        try {
            for (MapLink* at = bucket.head(); at != nullptr; at = at->next_)
                equal->places_.insert(equal->places_.end(), at);
        } catch (const std::bad_alloc&) {
            delete equal;
            return;
        }
        equal->head_ = bucket.head();
        bucket.equalIs(equal, bucket.fold());
        return;
    }
    const auto shift = static_cast<unsigned>(std::countr_zero(differ));
    BucketTable* child = BucketTable::make(bucket.fold(), shift, std::bit_ceil(2 * length));
    if (child == nullptr) return;
    // In order, so members of one bucket come one after another.
    MapLink* last = nullptr;
    Bucket* filling = nullptr;
    for (MapLink* at = bucket.head(); at != nullptr;) {
        MapLink* const following = std::exchange(at->next_, nullptr);
        const U32 fold = ops.fold(at);
        Bucket& to = child->at(fold);
        if (&to == filling) {
            last->next_ = at;
            to.chainIs(to.head(), to.fold(), true);
        } else {
            to.chainIs(at, fold, false);
            child->order.set(child->bucketPosition(fold));
            filling = &to;
        }
        last = at;
        at = following;
    }
    child->members = length;
    if (table != nullptr) {
        table->members -= length - 1; // the newest is not counted there yet
        table->childIs(child);
    }
    bucket.tableIs(child);
}

template <class Ops>
void OrderedBuckets::divert(const Ops& ops, Bucket& bucket, BucketTable* table, U32 fold) {
    SubBuckets* const sub = bucket.sub();
    const auto shift = static_cast<unsigned>(std::countr_zero(sub->differs(fold)));
    BucketTable* const before = BucketTable::make(fold, shift, 1);
    if (before == nullptr) throw std::bad_alloc();
    const Bucket old = bucket;
    before->bucketAt(0) = old;
    if (firstOf(old) != nullptr) before->order.set(0);
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

// ---------------------------------------------------------------------------------- growing

template <class Ops>
bool OrderedBuckets::split(const Ops& ops, BucketTable& table) noexcept {
    if (!table.prepareSplit()) return false;
    const U32 half = (table.wideMask_ >> 1) + 1;
    const U32 place = table.count_ - half;
    Bucket& from = table.bucketAt(place);
    Bucket& to = table.bucketAt(table.count_);
    const U32 bit = half << table.shift();
    if (from.isChain()) {
        splitChain(ops, table, from, to, bit);
    } else if (!from.isEmpty()) {
        const SubBuckets& sub = *from.sub();
        if ((bit & SubBuckets::lowBits(sub.shift())) == 0) {
            to = from; // the split lies behind its first bit
        } else if ((sub.prefix() & bit) != 0) {
            to = std::exchange(from, Bucket());
            if (table.order.has(bitReverse(place))) {
                table.order.clear(bitReverse(place));
                table.order.set(bitReverse(table.count_));
            }
        }
    }
    if (++table.count_ == 2 * half) {
        table.wideMask_ = 2 * table.wideMask_ + 1;
        table.order.roundDone();
    }
    return true;
}

// Members with a clear bit come first, so a split is one cut.
template <class Ops>
void OrderedBuckets::splitChain(const Ops& ops, BucketTable& table, Bucket& from, Bucket& to,
                                U32 bit) noexcept {
    const U32 fromPosition = bitReverse(table.count_ - (table.wideMask_ >> 1) - 1);
    const U32 toPosition = bitReverse(table.count_);
    if ((from.fold() & bit) != 0) {
        to = std::exchange(from, Bucket());
        table.order.clear(fromPosition);
        table.order.set(toPosition);
        return;
    }
    if (from.kind() == Bucket::Kind::one) return;
    MapLink* before = from.head();
    for (MapLink* at = before->next_; at != nullptr; before = at, at = at->next_) {
        const U32 fold = ops.fold(at);
        if ((fold & bit) == 0) continue;
        before->next_ = nullptr;
        from.chainIs(from.head(), from.fold(), before != from.head());
        to.chainIs(at, fold, at->next_ != nullptr);
        table.order.set(toPosition);
        return;
    }
}

template <class Ops>
void OrderedBuckets::reserve(const Ops& ops, U32 members) {
    if (size_ == 0 && members <= longestChain) {
        clear();
        return;
    }
    if (members <= longestChain) return;
    const U32 count = members > U32{1} << 30 ? U32{1} << 31 : 2 * members;
    if (size_ == 0) {
        BucketTable* const table = BucketTable::make(0, 0, count);
        if (table == nullptr) throw std::bad_alloc();
        clear();
        root_.tableIs(table);
        return;
    }
    if (!root_.isTable()) {
        if (root_.isEqual()) return; // an index needs no room
        BucketTable* const table = BucketTable::make(0, 0, count);
        if (table == nullptr) throw std::bad_alloc();
        MapLink* at = root_.head();
        root_.tableIs(table);
        while (at != nullptr) { // at most a chain: no bucket gets long, so nothing throws
            MapLink* const following = std::exchange(at->next_, nullptr);
            --size_;
            add(ops, at);
            at->referencesDec();
            at = following;
        }
        return;
    }
    BucketTable& table = *root_.table();
    while (table.count() < count && split(ops, table)) {}
}

// ---------------------------------------------------------------------------------- removing

template <class Ops>
bool OrderedBuckets::remove(const Ops& ops, MapLink* member) noexcept {
    const U32 fold = ops.fold(member);
    BucketTable* table = nullptr;
    Bucket* bucket = &root_;
    while (bucket->isTable()) {
        table = bucket->table();
        bucket = &table->at(fold);
    }
    if (bucket->isEmpty()) return false;
    if (bucket->isEqual()) {
        const auto place = bucket->equal()->places_.find(member);
        if (place == bucket->equal()->places_.end() || *place != member) return false;
        removeFromEqual(*bucket, member);
    } else {
        MapLink* const head = bucket->head();
        MapLink* before = nullptr;
        for (MapLink* at = head; at != member; before = at, at = at->next_)
            if (at == nullptr) return false;
        MapLink* const following = std::exchange(member->next_, nullptr);
        if (before != nullptr) {
            before->next_ = following;
            bucket->chainIs(head, bucket->fold(), head->next_ != nullptr);
        } else if (following != nullptr) {
            bucket->chainIs(following, ops.fold(following), following->next_ != nullptr);
        } else {
            *bucket = Bucket();
        }
    }
    --size_;
    if (table != nullptr) {
        --table->members;
        if (bucket->isEmpty()) vacated(table, fold);
    }
    return true;
}

// ---------------------------------------------------------------------------------- auditing

template <class Ops>
unsigned OrderedBuckets::auditErrors(const Ops& ops) const noexcept {
    U32 members = 0;
    unsigned errors = 0;
    if (root_.isTable())
        errors += auditTable(ops, root_.table(), members);
    else
        errors += auditBucket(ops, root_, root_.fold(), 0, members);
    errors += members != size_;
    const MapLink* before = first();
    U32 walked = before != nullptr ? 1 : 0;
    for (; before != nullptr && walked <= size_; ++walked) {
        const MapLink* const at = next(ops, before);
        if (at == nullptr) break;
        const U32 beforeFold = ops.fold(before);
        const U32 fold = ops.fold(at);
        errors += !(fold == beforeFold ? ops.isLess(before, at) : hashesBelow(beforeFold, fold));
        before = at;
    }
    errors += walked != size_;
    return errors;
}

template <class Ops>
unsigned OrderedBuckets::auditTable(const Ops& ops, const BucketTable* table,
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

template <class Ops>
unsigned OrderedBuckets::auditBucket(const Ops& ops, const Bucket& bucket, U32 fold, unsigned depth,
                                     U32& members) noexcept {
    if (bucket.isEmpty()) return 0;
    unsigned errors = 0;
    U32 length = 0;
    const MapLink* const head = bucket.isEqual() ? bucket.equal()->head_ : bucket.head();
    errors += ops.fold(head) != bucket.fold();
    for (const MapLink* at = head; at != nullptr; at = at->next_, ++length) {
        errors += ((ops.fold(at) ^ fold) & SubBuckets::lowBits(depth)) != 0;
        errors += at->references() == 0;
        if (bucket.isEqual()) errors += ops.fold(at) != bucket.fold();
    }
    if (bucket.isEqual())
        errors += bucket.equal()->size() != length;
    else
        errors += (bucket.kind() == Bucket::Kind::many) != (length > 1);
    members += length;
    return errors;
}

} // namespace Vel::detail
