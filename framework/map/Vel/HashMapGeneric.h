// HashMapGeneric.h - intrusive hash map whose members carry their own key and link.
//
// Owns:        one reference to each member. An empty map owns no memory, and what one line seats
//              needs none beside it: five members, seven in a 32-bit process.
// Invariant:   every member is counted once; no two members have equal keys. docs/map.md draws how
//              they are found.
// Cost:        find, insert and delete O(1) expected, O(log members) for any keys; an insert never
//              pays for the whole map: growth splits a few lines at a time; the first member is
//              found without walking what is empty.
// Order:       ascending reversed hash, then keyLessThan: the members alone decide, not history or
//              how many lines there are. A cache table relies on it: it takes the first free slot
//              that it meets.
// Invalidates: growth, no iterator's position; removal, only iterators that stand on the removed
//              member.
// Errors:      std::bad_alloc where a member finds no place without memory; then nothing has
//              changed. Where only growth fails, the map goes on with fuller lines.
// Threads:     no lock inside; the owner of the map serialises every call.
// ABI:         layout: one line of the map, of 64 bytes (detail/Line.h), two counters and a
//              pointer.
#pragma once

#include <Vel/Export.h>
#include <Vel/HashMapVTable.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/detail/LineMap.h>
#include <cstddef>
#include <cstdint>

namespace Vel {

class VEL_API HashMapGeneric {
public:
    // Room for `initialSize` members, which costs nothing where it is small. `vtable` outlives the
    // map.
    HashMapGeneric(unsigned initialSize, const HashMapVTableGeneric& vtable);
    // A map that learns by vtableIs() what its members are, before the first of them comes:
    // without, that is a fatal assertion.
    explicit HashMapGeneric(unsigned initialSize);
    HashMapGeneric(const HashMapGeneric&) = delete;
    HashMapGeneric& operator=(const HashMapGeneric&) = delete;

    ~HashMapGeneric() { emptyAllBuckets(); }

    // What the members are. The map is empty; `vtable` outlives it.
    void vtableIs(const HashMapVTableGeneric& vtable);

    // Inserts `member`, an object of the vtable's entry type that is in no map. *key is its key. A
    // member that has this key already gives way: it is removed.
    void newMemberG(const Ptr<PtrInterface>& member, void* key);
    // Removes a member and drops the map's reference to it. One that is not here changes nothing.
    void deleteMember(const Ptr<PtrInterface>& member);

    // The one candidate for *key: (1) the member that has it; (2) else the first member of this
    // hash whose key orders behind it; (3) else null. Without `key`, the first member of this hash.
    // `hash` is the key's; *bucket becomes it, for findNextBucket().
    PtrInterface* startAtHash(const void* key, unsigned hash, int* bucket) const;
    // The member behind `current` in the map's order, the first one for null; null at the end.
    // *bucket becomes its hash, and stays as it is at the end.
    PtrInterface* findNextG(const PtrInterface* current, int* bucket) const;
    // The first member whose hash is above *bucket, both unsigned, which it then becomes; null at
    // the end.
    PtrInterface* findNextBucket(int* bucket) const;

    // Makes room for so many members at once: inserting them then does not grow the map's own
    // table; where keys crowd together, smaller ones still come up. An empty map gives back what it
    // has beyond that; a map with members keeps what it has.
    void setSize0(unsigned members);

    // Removes every member and gives back all memory. The map is empty before the first reference
    // is dropped.
    void emptyAllBuckets() noexcept { lines_.clear(kind()); }

    std::size_t size() const noexcept { return lines_.size(); }

    // How many broken invariants the map can see in itself. O(size).
    unsigned auditErrors(unsigned level) const;

    // Bytes that the map holds beside itself and its members.
    std::size_t heapBytes() const noexcept { return lines_.heapBytes(); }

protected:
    using Lines = detail::LineMap<std::uintptr_t>;

    Lines lines_;

private:
    detail::MemberKind kind() const noexcept { return detail::MemberKind(vtable_); }

    const HashMapVTableGeneric* vtable_ = nullptr;
};

} // namespace Vel
