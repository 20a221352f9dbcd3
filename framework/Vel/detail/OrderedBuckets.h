// OrderedBuckets.h - the structure of a HashMapGeneric: a trie over the reversed hash, whose leaves are short chains.
//
// Shape:  a table has 64 slots, one for each value of the next six bits of the reversed hash, and one word that says which are
//         occupied. A slot is empty, or holds a chain, or another table for the six bits after these. The bits of the
//         reversed hash from the top are the bits of the fold from the bottom, so a look-up shifts the fold.
// Order:  slots ascend by their reversed bits, a chain by reversed hash and then by keyLessThan: walking the tables from the
//         first slot to the last gives the map's order, whatever was inserted and removed before.
// Growth: a chain that would have more than chainMax members becomes a table: work for chainMax members and never more, so no
//         insert pays for the whole map. Members whose 32 bits agree cannot be told apart by tables: their chain may
//         grow, and beyond chainMax an ordered set finds its places.
// Cost:   find, insert, remove, first and next: one step a level, at most six, then a chain or O(log n) in a set.
// Owns:   one reference to each member; moving a member between chains touches no count.
// Errors: when memory runs out, insert throws std::bad_alloc and the structure is as before.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/MapLink.h>
#include <bit>
#include <cstddef>

namespace Vel::detail {

class VEL_API OrderedBuckets {
public:
    static constexpr unsigned levelBits = 6;
    static constexpr unsigned hashBits = 32;
    static constexpr unsigned chainMax = 8;

    explicit constexpr OrderedBuckets(const HashMapVTableGeneric& vtable) noexcept
        : vtable_(&vtable) {}

    OrderedBuckets(const OrderedBuckets&) = delete;
    OrderedBuckets& operator=(const OrderedBuckets&) = delete;

    ~OrderedBuckets() { clear(); }

    std::size_t size() const noexcept { return size_; }

    // The chain that a key with this fold is in, null if there is none: its members ascend, and few have another fold.
    // Where it is long, `find` is the better way.
    MapLink* chain(U32 fold) const noexcept;
    // The member with the key, or null. `key` is what the vtable compares with.
    MapLink* find(const void* key, U32 fold) const noexcept;

    // Takes a reference to `member`, whose key no member has yet.
    void insert(MapLink& member, const void* key, U32 fold);
    // Drops the reference to a member. Undefined for an object that is no member.
    void remove(MapLink& member, U32 fold);
    // Drops every member.
    void clear() noexcept;

    // The first member in order; null if there is none.
    MapLink* first() const noexcept;
    // The first member behind the chain that holds `fold`; null if there is none.
    MapLink* firstBehindChain(U32 fold) const noexcept;

    // How many broken invariants there are: order, counts, occupancy, placement. O(size).
    unsigned auditErrors() const;

private:
    struct Table;
    struct Crowd;
    // What a slot holds: a chain's first member, or a table with the lowest bit set, or a crowd with the second.
    class Slot;
    struct Audit;

    static unsigned indexOf(U32 fold, unsigned level) noexcept;
    U32 foldOf(const MapLink& member) const noexcept;
    bool below(const MapLink& a, U32 foldOfA, const MapLink& b) const noexcept;

    // The slot that a fold leads to, and its level. Null when the map has no table yet.
    Slot* slotFor(U32 fold, unsigned& level) const noexcept;
    void link(Slot& slot, MapLink& member, U32 fold) noexcept;
    void split(Slot& slot, unsigned level);
    void crowd(Slot& slot);
    void prune(U32 fold) noexcept;
    static MapLink* firstOf(const Slot& slot) noexcept;
    static MapLink* firstIn(const Table& table) noexcept;
    static MapLink* behind(const Table& table, U32 fold, unsigned level) noexcept;
    static void drop(Slot& slot) noexcept;
    static void drop(Table* table) noexcept;
    void audit(const Table& table, unsigned level, U32 prefix, Audit& seen) const;

    const HashMapVTableGeneric* vtable_;
    Table* root_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace Vel::detail
