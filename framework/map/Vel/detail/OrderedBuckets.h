// OrderedBuckets.h - the members of a map in their order: what HashMapGeneric and HashMap both stand on.
//
// Shape:   a map is one bucket (Bucket). Up to eight members need no more; else it leads to a table of buckets
//          (BucketTable), and a bucket in a table that outgrows sixteen leads to a table of its own, over the bits in which
//          its members differ. Members that differ in no bit get an index (EqualHashes), which is such a map again where
//          their keys have ranks. So neither strides nor hostile keys make a long chain.
// Order:   ascending reversed hash, then keyLessThan, whatever the shape.
// Links:   a member has a next only behind the last seat of a full bucket, and in an index.
// Counts:  each member here is counted once; links move without touching counts.
// Plain:   a member may be a number and no object (PlainMember), where Ops says so. It sits in a bucket with nobody behind
//          the seats: a bucket that gets more makes objects of all its members first.
// Ops:     every algorithm is a template over what it must know of members: fold(member), isLess(a, b) and
//          isEqual(a, b) for members of one fold, vtable(); hasPlainMembers, and embodied(fold, member) if so; hasRanks, and
//          Ranks, the ops of a map of ranks, if so. HashMap passes inlined code, HashMapGeneric its vtable.
// Errors:  without memory growth waits and chains get longer. Only where a member finds no place at all without memory
//          add() throws std::bad_alloc, and nothing has changed.
// Test: HashMap_test.cpp against a model.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/KeyHash.h>
#include <Vel/MapLink.h>
#include <Vel/detail/BucketTable.h>
#include <Vel/detail/EqualHashes.h>
#include <Vel/detail/PlainMember.h>
#include <Vel/detail/VTableOps.h>
#include <new>
#include <utility>

namespace Vel::detail {

class VEL_API OrderedBuckets {
public:
    // The most members of one bucket: of a map that has no table, and of a table's.
    static constexpr U32 mostWithoutTable = 8;
    static constexpr U32 mostInTable = 16;

    // Where a walk stands, so that it need not look up where it is: good until the map changes.
    class Place {
    public:
        // The fold of `member`, who is here.
        template <class Ops>
        U32 fold(const Ops& ops, const MapLink* member) const noexcept {
            if (inside_ != nullptr) return inside_->prefix();
            return seat_ < Bucket::seats ? bucket_->fold(seat_) : ops.fold(member);
        }

        // The member in the seat; nobody who stands is found by a place.
        MapLink* seated() const noexcept {
            return seat_ < Bucket::seats ? bucket_->member(seat_) : nullptr;
        }

    private:
        friend class OrderedBuckets;

        U64 changes_ = 0;
        const BucketTable* table_ = nullptr;
        const EqualHashes* inside_ = nullptr; // its map of ranks is where table and bucket are
        const Bucket* bucket_ = nullptr;
        U32 position_ = 0;     // of the bucket in its table
        U32 seat_ = 0;         // Bucket::seats or more: behind the seats, or in an index
        BucketOrder::Run run_; // buckets behind this one in its table
    };

    OrderedBuckets() noexcept = default;
    OrderedBuckets(const OrderedBuckets&) = delete;
    OrderedBuckets& operator=(const OrderedBuckets&) = delete;

    ~OrderedBuckets() { clear(); }

    U32 size() const noexcept { return size_; }

    // Counts the member of this fold up and places it. A member of equal key gives way: it is returned, still counted, in
    // no map.
    template <class Ops>
    MapLink* add(const Ops& ops, U32 fold, MapLink* member);

    // Takes the member out, still counted. False when it is not here.
    template <class Ops>
    bool remove(const Ops& ops, MapLink* member) noexcept;

    // The same for the member that find() would give; it is returned.
    template <class Ops, class IsKey>
    MapLink* take(const Ops& ops, U32 fold, const void* key, const IsKey& isKey) noexcept;

    // The member of this fold for which isKey(member) holds, or null; isKey is asked of members of this fold alone.
    // `key` is what it looks for.
    template <class Ops, class IsKey>
    MapLink* find(const Ops& ops, U32 fold, const void* key, const IsKey& isKey) const noexcept;

    // Where the map keeps the member of this fold, the only one of it; null where there is none. Good until the map
    // changes; another member of this fold may be put there.
    template <class Ops>
    MapLink** find(const Ops& ops, U32 fold) noexcept;

    // Begins to fetch the bucket of a fold. Always inline: see fetchAhead().
    [[gnu::always_inline]] void fetch(U32 fold) const noexcept {
        if (root_.isTable()) __builtin_prefetch(&root_.table()->at(fold), 1);
    }

    MapLink* first() const noexcept {
        Place place;
        return first(place);
    }

    MapLink* first(Place& place) const noexcept {
        place = Place();
        place.bucket_ = &root_;
        return firstHere(place);
    }

    // The member behind this one, an object.
    template <class Ops>
    MapLink* next(const Ops& ops, const MapLink* member) const noexcept {
        Place place;
        return next(ops, member, place);
    }

    // The same; the place is `member`'s if it is good still, and becomes the next one's.
    template <class Ops>
    MapLink* next(const Ops& ops, const MapLink* member, Place& place) const noexcept {
        if (!isGood(place)) [[unlikely]]
            locate(ops, member, place);
        return behind(place, member);
    }

    bool isGood(const Place& place) const noexcept { return place.changes_ == changes_; }

    // The member behind the one at a good place.
    MapLink* behind(Place& place, const MapLink* member) const noexcept {
        if (++place.seat_ < place.bucket_->seated()) return place.bucket_->member(place.seat_);
        return behindSeats(place, member);
    }

    // The first member whose hash is not below `hash`, and its place.
    template <class Ops>
    MapLink* notBelow(const Ops& ops, U32 hash, Place& place) const noexcept;

    // Calls visit(member) for every member, in no order: faster than a walk. The visit does not change the map.
    template <class Visit>
    void visitAll(const Visit& visit) const {
        visitAll(root_, visit);
    }

    // Room for so many members; an empty map gives back what it had beyond that. `shared` is believed if it is of enough
    // keys, which are like those that will come to an empty map. Throws std::bad_alloc and changes nothing.
    template <class Ops>
    void reserve(const Ops& ops, U32 members, const SharedBits& shared = SharedBits());

    // Drops every member; the map is empty before the first of them learns of it.
    void clear() noexcept;

    unsigned auditErrors(const VTableOps& ops) const noexcept;

    // What the map holds besides itself and its members, in bytes; an index's tree as the standard library's lays it out.
    // O(buckets).
    std::size_t heapBytes() const noexcept;

private:
    template <class Ops, class IsKey>
    static MapLink* findAside(const Ops& ops, const Bucket& bucket, U32 fold, const void* key,
                              const IsKey& isKey) noexcept;
    template <class Ops>
    void locate(const Ops& ops, const MapLink* member, Place& place) const noexcept;
    // Makes the place that of the fold's bucket and table.
    void locate(U32 fold, Place& place) const noexcept;
    // The place's bucket has members of one hash.
    void locateInside(const MapLink* member, Place& place) const noexcept;
    MapLink* firstInside(Place& place) const noexcept;
    // The member behind one who sits in the last taken seat, or in none.
    MapLink* behindSeats(Place& place, const MapLink* member) const noexcept;
    // The first member of the place's bucket, or of those that it leads to.
    MapLink* firstHere(Place& place) const noexcept;
    // Moves the place's position to the next occupied bucket of its table.
    static bool nextOccupied(const BucketTable& table, Place& place) noexcept;
    // The first member behind the range of the place's position in its table.
    MapLink* firstAfter(Place& place) const noexcept;

    // Whether it leads to an empty table.
    static bool isVacant(const Bucket& bucket) noexcept {
        return bucket.isTable() && bucket.table()->order.empty();
    }

    static void fetchAhead(const BucketTable& table, U32 position) noexcept;
    static void drop(Bucket& bucket) noexcept;
    static void dropTable(BucketTable* table) noexcept;
    static std::size_t heapBytesOf(const Bucket& bucket) noexcept;

    // Calls visit(member) in order; for a bucket that leads nowhere.
    template <class Visit>
    static void visit(const Bucket& bucket, const Visit& visit);
    template <class Visit>
    static void visitAll(const Bucket& bucket, const Visit& visit);
    template <class Visit>
    static void visitAll(const BucketTable& table, const Visit& visit);
    // Makes one chain of a bucket's members, and buckets of a chain's.
    static MapLink* chained(const Bucket& bucket) noexcept;
    template <class Ops>
    static void seat(const Ops& ops, Bucket& bucket, MapLink* chain) noexcept;

    void occupied(BucketTable* table, U32 fold) noexcept;
    void vacated(BucketTable* table, U32 fold) noexcept;
    // Counts a member of `bucket` down.
    inline void removed(BucketTable* table, const Bucket* bucket, U32 fold) noexcept;
    // Puts a table before what the bucket leads to, so that `fold` finds a place beside it.
    void divert(const VTableOps& ops, Bucket& bucket, BucketTable* table, U32 fold);
    // Before a full bucket gets one member more. Returns what is to be added in the place of `member`.
    template <class Ops>
    static MapLink* embody(const Ops& ops, Bucket& bucket, U32 fold, MapLink* member);
    template <class Ops>
    static MapLink* addToBucket(const Ops& ops, Bucket& bucket, MapLink* member, U32 fold) noexcept;
    template <class Ops>
    static MapLink* addBehind(const Ops& ops, Bucket& bucket, MapLink* member, U32 fold) noexcept;
    template <class Ops>
    static bool removeFromBucket(const Ops& ops, Bucket& bucket, MapLink* member) noexcept;
    template <class Ops>
    static void vacate(const Ops& ops, Bucket& bucket, U32 seat) noexcept;
    static bool removeFromEqual(const VTableOps& ops, Bucket& bucket, MapLink* member) noexcept;
    // Makes a table or an index of too full a bucket.
    void divide(const VTableOps& ops, Bucket& bucket, BucketTable* table) noexcept;
    static void index(const VTableOps& ops, Bucket& bucket, U32 fold) noexcept;
    // Lets a table of its first members, SharedBits::enoughKeys, go over bits in which they differ.
    static void settle(const VTableOps& ops, BucketTable& table) noexcept;
    template <class Ops>
    static bool split(const Ops& ops, BucketTable& table) noexcept;
    template <class Ops>
    static void splitMembers(const Ops& ops, BucketTable& table, Bucket& from, Bucket& to,
                             U32 bit) noexcept;
    static unsigned auditTable(const VTableOps& ops, const BucketTable* table,
                               U32& members) noexcept;
    static unsigned auditBucket(const VTableOps& ops, const Bucket& bucket, U32 fold,
                                unsigned depth, U32& members) noexcept;

    Bucket root_;
    U32 size_ = 0;
    U64 changes_ = 1; // never a place's 0
};

// ---------------------------------------------------------------------------------- looking up

// Kept short: how many look-ups the processor has under way at once, each waiting for memory, depends on it.
template <class Ops, class IsKey>
MapLink* OrderedBuckets::find(const Ops& ops, U32 fold, const void* key,
                              const IsKey& isKey) const noexcept {
    const Bucket* bucket = &root_;
    while (bucket->leads()) {
        if (!bucket->isTable()) [[unlikely]]
            return findAside(ops, *bucket, fold, key, isKey);
        bucket = &bucket->table()->at(fold);
    }
    Bucket::Seats same = bucket->same(fold);
    for (U32 seat = 0; (seat = Bucket::firstOf(same)) < bucket->seated(); same &= same - 1)
        if (isKey(bucket->member(seat))) return bucket->member(seat);
    if (!bucket->hasMore()) [[likely]]
        return nullptr;
    return findAside(ops, *bucket, fold, key, isKey);
}

// Behind the seats, or in an index.
template <class Ops, class IsKey>
[[gnu::noinline]] MapLink* OrderedBuckets::findAside(const Ops& ops, const Bucket& bucket, U32 fold,
                                                     const void* key, const IsKey& isKey) noexcept {
    if (bucket.isEqual()) {
        if (bucket.sub().prefix() != fold) return nullptr;
        if constexpr (Ops::hasRanks) {
            constexpr typename Ops::Ranks ranks;
            return bucket.equal()->ranked()->find(ranks, ranks.foldOf(key), key, isKey);
        } else {
            MapLink* const found = bucket.equal()->find(key);
            return found != nullptr && isKey(found) ? found : nullptr;
        }
    }
    if (hashesBelow(fold, bucket.fold(Bucket::seats - 1))) return nullptr;
    for (MapLink* at = bucket.member(Bucket::seats - 1)->next_; at != nullptr; at = at->next_)
        if (ops.fold(at) == fold && isKey(at)) return at;
    return nullptr;
}

template <class Ops>
MapLink** OrderedBuckets::find(const Ops& ops, U32 fold) noexcept {
    Bucket* bucket = &root_;
    while (bucket->isTable()) bucket = &bucket->table()->at(fold);
    const U32 seat = Bucket::firstOf(bucket->same(fold));
    if (seat < bucket->seated()) [[likely]]
        return &bucket->memberAt(seat);
    if (!bucket->hasMore()) [[likely]]
        return nullptr;
    MapLink** link = &bucket->member(Bucket::seats - 1)->next_;
    while (*link != nullptr && ops.fold(*link) != fold) link = &(*link)->next_;
    return *link != nullptr ? link : nullptr;
}

template <class Ops>
void OrderedBuckets::locate(const Ops& ops, const MapLink* member, Place& place) const noexcept {
    locate(ops.fold(member), place);
    place.changes_ = changes_;
    if (place.bucket_->isEqual()) return locateInside(member, place);
    place.seat_ = place.bucket_->seatOf(member);
}

inline void OrderedBuckets::locate(U32 fold, Place& place) const noexcept {
    place = Place();
    place.bucket_ = &root_;
    for (; place.bucket_->isTable(); place.bucket_ = &place.table_->at(fold))
        place.table_ = place.bucket_->table();
    if (place.table_ != nullptr) place.position_ = place.table_->bucketPosition(fold);
}

template <class Ops>
MapLink* OrderedBuckets::notBelow(const Ops& ops, U32 hash, Place& place) const noexcept {
    const U32 fold = bitReverse(hash);
    place = Place();
    place.bucket_ = &root_;
    while (place.bucket_->isTable() && place.bucket_->table()->differs(fold) == 0) {
        place.table_ = place.bucket_->table();
        place.bucket_ = &place.table_->at(fold);
    }
    if (place.table_ != nullptr) place.position_ = place.table_->bucketPosition(fold);
    const Bucket& bucket = *place.bucket_;
    if (bucket.leads()) {
        if (!hashesBelow(bucket.sub().prefix(), fold)) {
            Place inside = place;
            if (MapLink* const found = firstHere(inside)) {
                place = inside;
                return found;
            }
        }
        return firstAfter(place);
    }
    place.changes_ = changes_;
    place.seat_ = bucket.below(fold);
    if (place.seat_ < bucket.seated()) return bucket.member(place.seat_);
    if (bucket.hasMore())
        for (MapLink* at = bucket.member(place.seat_ - 1)->next_; at != nullptr; at = at->next_)
            if (!hashesBelow(ops.fold(at), fold)) return at;
    return firstAfter(place);
}

// ---------------------------------------------------------------------------------- adding

template <class Ops>
MapLink* OrderedBuckets::add(const Ops& ops, U32 fold, MapLink* member) {
    ++changes_; // of places, even where there is no place without memory
    BucketTable* table = nullptr;
    Bucket* bucket = &root_;
    while (bucket->leads()) {
        if (bucket->sub().differs(fold) != 0) [[unlikely]]
            divert(VTableOps::of(ops), *bucket, table, fold);
        if (!bucket->isTable()) break;
        table = bucket->table();
        bucket = &table->at(fold);
    }
    if constexpr (Ops::hasPlainMembers)
        if (bucket->seated() == Bucket::seats) [[unlikely]]
            member = embody(ops, *bucket, fold, member);
    const bool wasEmpty = bucket->isEmpty();
    MapLink* replaced = nullptr;
    if (bucket->isEqual()) [[unlikely]] {
        replaced = bucket->equal()->add(member);
    } else {
        replaced = addToBucket(ops, *bucket, member, fold);
        if (!Ops::hasPlainMembers || !PlainMember::is(member)) member->referencesInc();
    }
    if (replaced != nullptr) [[unlikely]]
        return replaced;
    ++size_;
    if (table == nullptr) {
        if (Bucket::seats + bucket->standing() > mostWithoutTable)
            divide(VTableOps::of(ops), *bucket, nullptr);
        return nullptr;
    }
    ++table->members;
    if (wasEmpty)
        occupied(table, fold);
    else if (Bucket::seats + bucket->standing() > mostInTable)
        divide(VTableOps::of(ops), *bucket, table);
    if (table->awaitsMembers && table->members == SharedBits::enoughKeys) [[unlikely]]
        settle(VTableOps::of(ops), *table);
    constexpr U32 batch = 4;
    if (table->isTight(batch))
        while (table->isTight(0))
            if (!split(ops, *table)) break;
    return nullptr;
}

template <class Ops>
MapLink* OrderedBuckets::embody(const Ops& ops, Bucket& bucket, U32 fold, MapLink* member) {
    for (U32 seat = 0; seat < Bucket::seats; ++seat) {
        if (!PlainMember::is(bucket.member(seat))) continue;
        bucket.replace(seat, ops.embodied(bucket.fold(seat), bucket.member(seat)));
        bucket.member(seat)->referencesInc();
    }
    return PlainMember::is(member) ? ops.embodied(fold, member) : member;
}

template <class Ops>
MapLink* OrderedBuckets::addToBucket(const Ops& ops, Bucket& bucket, MapLink* member,
                                     U32 fold) noexcept {
    U32 seat = bucket.below(fold);
    for (; seat < bucket.seated() && bucket.fold(seat) == fold; ++seat) {
        MapLink* const at = bucket.member(seat);
        if (ops.isEqual(member, at)) {
            bucket.replace(seat, member);
            member->next_ = std::exchange(at->next_, nullptr);
            return at;
        }
        if (ops.isLess(member, at)) break;
    }
    if (seat == Bucket::seats) return addBehind(ops, bucket, member, fold);
    MapLink* const out = bucket.seatIn(seat, member, fold);
    if (out != nullptr) {
        bucket.member(Bucket::seats - 1)->next_ = out;
        bucket.standingInc();
    }
    return nullptr;
}

// All seats go to members before this one.
template <class Ops>
MapLink* OrderedBuckets::addBehind(const Ops& ops, Bucket& bucket, MapLink* member,
                                   U32 fold) noexcept {
    MapLink* before = bucket.member(Bucket::seats - 1);
    MapLink* at = before->next_;
    for (; at != nullptr; before = std::exchange(at, at->next_)) {
        const U32 atFold = ops.fold(at);
        if (atFold == fold) {
            if (ops.isEqual(member, at)) {
                before->next_ = member;
                member->next_ = std::exchange(at->next_, nullptr);
                return at;
            }
            if (ops.isLess(member, at)) break;
        } else if (hashesBelow(fold, atFold)) {
            break;
        }
    }
    member->next_ = at;
    before->next_ = member;
    bucket.standingInc();
    return nullptr;
}

template <class Visit>
void OrderedBuckets::visit(const Bucket& bucket, const Visit& visit) {
    for (U32 seat = 0; seat < bucket.seated(); ++seat) visit(bucket.member(seat));
    if (bucket.hasMore())
        for (MapLink* at = bucket.member(Bucket::seats - 1)->next_; at != nullptr; at = at->next_)
            visit(at);
}

template <class Visit>
void OrderedBuckets::visitAll(const Bucket& bucket, const Visit& visit) {
    if (bucket.isTable()) return visitAll(*bucket.table(), visit);
    if (!bucket.isEqual()) return OrderedBuckets::visit(bucket, visit);
    if (const OrderedBuckets* const ranked = bucket.equal()->ranked())
        return ranked->visitAll(visit);
    for (MapLink* at = bucket.equal()->head(); at != nullptr; at = at->next_) visit(at);
}

// Several buckets may lead to one table: it is visited as a child. How many seats of a bucket are taken cannot be guessed, so
// members are gathered without asking, some buckets at a time.
template <class Visit>
void OrderedBuckets::visitAll(const BucketTable& table, const Visit& visit) {
    constexpr U32 enough = 64;
    MapLink* gathered[enough + Bucket::seats];
    U32 count = 0;
    const auto visitGathered = [&] {
        const Visit own = visit; // which nobody else writes to
        for (U32 i = 0; i < count; ++i) own(gathered[i]);
        count = 0;
    };
    for (U32 place = 0; place < table.count(); ++place) {
        const Bucket& bucket = table.bucketAt(place);
        if (bucket.leads() || bucket.hasMore()) [[unlikely]] {
            if (!bucket.isTable()) visitAll(bucket, visit);
            continue;
        }
        count += bucket.copySeats(gathered + count);
        if (count >= enough) visitGathered();
    }
    visitGathered();
    for (const BucketTable* child = table.firstChild; child != nullptr; child = child->nextSibling)
        visitAll(*child, visit);
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
    if (!from.leads()) {
        splitMembers(ops, table, from, to, bit);
    } else {
        const SubBuckets& sub = from.sub();
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
void OrderedBuckets::splitMembers(const Ops& ops, BucketTable& table, Bucket& from, Bucket& to,
                                  U32 bit) noexcept {
    if (from.isEmpty()) return;
    if (!from.hasMore()) [[likely]] {
        from.cut(bit, to);
    } else {
        MapLink* kept = chained(from);
        MapLink** end = &kept;
        while (*end != nullptr && (ops.fold(*end) & bit) == 0) end = &(*end)->next_;
        MapLink* const moved = std::exchange(*end, nullptr);
        seat(ops, from, kept);
        seat(ops, to, moved);
    }
    if (from.isEmpty()) table.order.clear(bitReverse(table.count_ - (table.wideMask_ >> 1) - 1));
    if (!to.isEmpty()) table.order.set(bitReverse(table.count_));
}

template <class Ops>
void OrderedBuckets::seat(const Ops& ops, Bucket& bucket, MapLink* chain) noexcept {
    bucket.clear();
    while (chain != nullptr && bucket.seated() < Bucket::seats) {
        MapLink* const member = std::exchange(chain, chain->next_);
        member->next_ = nullptr;
        bucket.seatLast(member, ops.fold(member));
    }
    if (chain == nullptr) return;
    bucket.member(Bucket::seats - 1)->next_ = chain;
    for (; chain != nullptr; chain = chain->next_) bucket.standingInc();
}

template <class Ops>
void OrderedBuckets::reserve(const Ops& ops, U32 members, const SharedBits& shared) {
    if (size_ == 0 && members <= mostWithoutTable) {
        clear();
        return;
    }
    if (members <= mostWithoutTable) return;
    U32 count = BucketTable::bucketsFor(members);
    // Plain members should find a seat: no bucket should wait for its split with twice as many as others have.
    if (Ops::hasPlainMembers) count = std::bit_ceil(count);
    if (root_.isTable() && size_ != 0) {
        ++changes_;
        BucketTable& table = *root_.table();
        while (table.count() < count && split(ops, table)) {}
        return;
    }
    if (root_.isEqual()) return; // an index needs no room
    BucketTable* const table = BucketTable::make(0, 0, count);
    if (table == nullptr) throw std::bad_alloc();
    table->awaitsMembers = shared.keys() < SharedBits::enoughKeys && shared.bits() != 0;
    if (size_ == 0) {
        clear();
        if (shared.keys() >= SharedBits::enoughKeys) table->startBehind(shared);
    }
    ++changes_;
    const Bucket old = root_;
    root_.tableIs(table);
    // So few that no bucket is divided; plain ones are too few to fill a bucket: nothing throws.
    const auto move = [&](U32 fold, MapLink* member) {
        --size_;
        add(ops, fold, member);
        if (!PlainMember::is(member)) member->referencesDec();
    };
    MapLink* at =
        old.hasMore() ? std::exchange(old.member(Bucket::seats - 1)->next_, nullptr) : nullptr;
    for (U32 seat = 0; seat < old.seated(); ++seat) move(old.fold(seat), old.member(seat));
    while (at != nullptr) {
        MapLink* const member = std::exchange(at, std::exchange(at->next_, nullptr));
        move(ops.fold(member), member);
    }
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
    if (!removeFromBucket(ops, *bucket, member)) return false;
    removed(table, bucket, fold);
    return true;
}

inline void OrderedBuckets::removed(BucketTable* table, const Bucket* bucket, U32 fold) noexcept {
    --size_;
    ++changes_;
    if (table == nullptr) return;
    --table->members;
    if (bucket->isEmpty()) vacated(table, fold);
}

// Finds the seat by the fold: a member is touched only where keys of one fold differ.
template <class Ops, class IsKey>
MapLink* OrderedBuckets::take(const Ops& ops, U32 fold, const void* key,
                              const IsKey& isKey) noexcept {
    BucketTable* table = nullptr;
    Bucket* bucket = &root_;
    while (bucket->isTable()) {
        table = bucket->table();
        bucket = &table->at(fold);
    }
    if (!bucket->leads()) {
        Bucket::Seats same = bucket->same(fold);
        for (U32 seat = 0; (seat = Bucket::firstOf(same)) < bucket->seated(); same &= same - 1) {
            MapLink* const member = bucket->member(seat);
            if (!isKey(member)) continue;
            vacate(ops, *bucket, seat);
            removed(table, bucket, fold);
            return member;
        }
        if (!bucket->hasMore()) return nullptr;
    }
    MapLink* const member = findAside(ops, *bucket, fold, key, isKey);
    if (member != nullptr && removeFromBucket(ops, *bucket, member)) removed(table, bucket, fold);
    return member;
}

template <class Ops>
bool OrderedBuckets::removeFromBucket(const Ops& ops, Bucket& bucket, MapLink* member) noexcept {
    if (bucket.isEqual()) return removeFromEqual(VTableOps::of(ops), bucket, member);
    const U32 seat = bucket.seatOf(member);
    if (seat != Bucket::seats) {
        vacate(ops, bucket, seat);
        return true;
    }
    if (!bucket.hasMore()) return false;
    MapLink* before = bucket.member(Bucket::seats - 1);
    while (before->next_ != member)
        if ((before = before->next_) == nullptr) return false;
    before->next_ = std::exchange(member->next_, nullptr);
    bucket.standingDec();
    return true;
}

// The first that stands takes the last seat.
template <class Ops>
void OrderedBuckets::vacate(const Ops& ops, Bucket& bucket, U32 seat) noexcept {
    if (!bucket.hasMore()) [[likely]]
        return bucket.seatOut(seat);
    constexpr U32 last = Bucket::seats - 1;
    MapLink* const following = std::exchange(bucket.member(last)->next_, nullptr);
    bucket.seatOut(seat);
    bucket.standingDec();
    bucket.seatIn(last, following, ops.fold(following));
}

} // namespace Vel::detail
