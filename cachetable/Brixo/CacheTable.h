// CacheTable.h - fixed-size entries in a named DMA region, found again after their process was
// killed.
//
// Owns:       the mapping of its region for as long as the process lives. The region itself is
//             nobody's: it outlives the process on purpose, and destroying the table neither unmaps
//             nor removes it.
// Alone:      a second table on the region, in this process or another, is refused nothing, and
//             traces one line that says who was there first. Both would give away the same slots.
// Region:     "CacheTable-<agent>-<device>-<hash of the resource id>", laid out as
//             docs/region-layout.md shows and RegionLayout.h states: magic, formatted flag, then
//             size() slots of a key word and entrySize() bytes.
// Invariant:  keyToIndexs() + freeIndexs() == size(); each slot index below size() is the value of
//             exactly one member of keyToIndex or a member of freeIndex, never both.
// Writes:     key word first, then the data, in place and with one copy. A killed writer leaves
//             every earlier write whole; the one in flight may be torn.
// Deleting:   changes the maps only. The slot keeps its key word and data until it is reused, so a
//             deleted entry comes back with the next recovery, and a key that was deleted and
//             written again into a higher slot comes back with its older bytes: the lowest slot
//             wins.
// Key:        0xffffffff is accepted, but its slot reads as unused in the next recovery: that entry
//             is lost then.
// Cost:       entry() is one look-up and one addition. A slot takes a bit of freeIndex or a seat of
//             keyToIndex, for which recovery makes room; a map's member becomes an object only when
//             somebody asks for it (LazyCollection.h).
// Errors:     broken preconditions are assertions that end the process; an absent key is no error.
//             Without memory, what makes members throws std::bad_alloc; entryIs() has changed
//             nothing then, doRestart() leaves both maps empty.
// Threads:    no lock: the table belongs to its agent's thread. Other readers of the region see
//             writes as they happen.
#pragma once

#include <Brixo/AgentId.h>
#include <Brixo/CacheTableIndex.h>
#include <Brixo/DeviceOffset.h>
#include <Brixo/Export.h>
#include <Brixo/RegionLayout.h>
#include <Brixo/detail/RegionUse.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/IndexSet.h>
#include <Vel/Integers.h>
#include <Vel/LazyCollection.h>
#include <Vel/MapMember.h>
#include <Vel/PlainMap.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

namespace detail {
struct RegionRecord;
}

class BRIXO_API CacheTable : public Vel::PtrInterface {
public:
    VEL_ENTITY(CacheTable)

    // Which slot holds a key.
    class BRIXO_API VelKeyToIndex final : public Vel::MapMember<DeviceOffset, Vel::U32> {
    public:
        using MapMember::MapMember;
    };

    // A slot that nobody uses; every member's value is true.
    class BRIXO_API VelFreeIndex final : public Vel::MapMember<Vel::U32, bool> {
    public:
        using MapMember::MapMember;
    };

    using KeyToIndex = Vel::LazyCollection<VelKeyToIndex, Vel::PlainMap<DeviceOffset>>;
    using FreeIndex = Vel::LazyCollection<VelFreeIndex, Vel::IndexSet>;

    // Obtains, maps, formats and recovers the region before it returns; see handleInitialized().
    // size: slots. entrySize: bytes of data in each, the key word not included.
    CacheTable(AgentId agentId, const CacheTableIndex& tableId, Vel::U32 size, Vel::U32 entrySize);
    // No copy: two tables on one region would each give away the same free slots.
    CacheTable(const CacheTable&) = delete;
    CacheTable& operator=(const CacheTable&) = delete;
    ~CacheTable() override;

    AgentId agentId() const noexcept { return agentId_; }

    const CacheTableIndex& tableId() const noexcept { return tableId_; }

    Vel::U32 size() const noexcept { return size_; }

    Vel::U32 entrySize() const noexcept { return entrySize_; }

    // The entry's entrySize() bytes in the region, or null when the key is absent. Valid as long as
    // the process lives; the slot may come to hold another key.
    Vel::BytePtr entry(DeviceOffset key) const {
        Vel::U32 index = 0;
        return keyToIndex_.lookUp(key, index) ? slot(index) + RegionLayout::keyWordBytes : nullptr;
    }

    // Writes entrySize() bytes from `data`. A key that is present keeps its slot; a new one takes
    // the first free slot in the order of freeIndex. Asserts "freeIndexs() > 0" for a new key in a
    // full table.
    void entryIs(DeviceOffset key, const unsigned char* data);
    // Forgets the key and frees its slot; writes nothing into the region. An absent key changes
    // nothing.
    void entryDel(DeviceOffset key);

    // For scripts: the first 8 bytes of the entry as a number in host order, 0 when absent. Of an
    //              entry narrower than 8
    // bytes, the upper bytes are those of whatever follows it.
    Vel::U64 entry_py(DeviceOffset key) const;
    // For scripts: writes 8 bytes in host order and zeroes behind them. Asserts "entrySize() >=
    //              sizeof( U64 )" first.
    void entryIs_py(DeviceOffset key, const Vel::U64& data);

    // The mapped region, or null before it is mapped; and its size in bytes, modulo 2^32.
    Vel::BytePtr pinbufPtr() const noexcept { return pinbufPtr_; }

    void pinbufPtrIs(Vel::BytePtr ptr) noexcept { pinbufPtr_ = ptr; }

    Vel::U32 pinbufSize() const noexcept { return pinbufSize_; }

    void pinbufSizeIs(Vel::U32 size) noexcept { pinbufSize_ = size; }

    // The key word of slot `index`. Asserts "offset < pinbufSize()".
    Vel::BytePtr entryPtr(Vel::U32 index) const;

    // Which slot holds which key: for (const auto& [key, index] : table.keyToIndex()). The writers
    // change the map and nothing in the region; they are the framework's.
    VEL_COLLECTION_READERS(keyToIndex, KeyToIndex);
    VEL_COLLECTION_WRITERS(keyToIndex, KeyToIndex);
    Vel::Ptr<VelKeyToIndex> newKeyToIndex(DeviceOffset key, Vel::U32 index);
    // Returns the removed slot index, 0 when the key is absent.
    Vel::U32 keyToIndexDel(DeviceOffset key);

    // The unused slots.
    VEL_COLLECTION_READERS(freeIndex, FreeIndex);
    VEL_COLLECTION_WRITERS(freeIndex, FreeIndex);
    Vel::Ptr<VelFreeIndex> newFreeIndex(Vel::U32 index, bool value);

    void freeIndexDel(Vel::U32 index) { freeIndex_.remove(index); }

    // Rebuilds both maps from the slots alone; may be called at any time. Of several slots with one
    // key the lowest keeps it, the others are marked unused. One pass, in ascending order; each
    // slot is traced and written before the next is judged. Asserts "offset < pinbufSize()" at the
    // first slot that begins behind the region, and in the end "keyToIndexs() + freeIndexs() ==
    // size()". Without memory it throws std::bad_alloc and leaves both maps empty: until a later
    // call succeeds, every key is absent and entryIs() asserts "freeIndexs() > 0". The region has
    // lost nothing by it, and members that somebody holds live on. The room that the maps had is
    // given back first, so that a pass needs no more than the table has had before.
    void doRestart();

    // Whether handleInitialized() has finished; true once the constructor has returned.
    bool initialized() const noexcept { return initialized_; }

    void initializedIs(bool initialized) noexcept { initialized_ = initialized; }

    // Obtains the region from pinbuf, maps it, formats it unless it is formatted, and recovers it.
    // The constructor calls it. Asserts "pa" when there is no region, or one that was made for
    // slots of another size as far as its own size tells (docs/region-layout.md); "pinbufPtr()"
    // when it cannot be mapped; and "offset < pinbufSize()", before a region is asked for, when
    // slots and header together take more than 2^32 bytes: pinbufSize() is too small for them then
    // ("pa" for 2^32 bytes sharp).
    void handleInitialized();

    // How many slots below size() are not in exactly one of the two maps, how many members stand
    // for no such slot, and what the maps see in themselves. O(size), with a byte per slot.
    unsigned auditErrors(unsigned level) const override;

    static constexpr auto schema();

private:
    // entryPtr(), which asserts what holds here nearly always.
    Vel::BytePtr slot(Vel::U32 index) const {
        const Vel::U32 offset = RegionLayout::slotOffset(entrySize_, index);
        return offset < pinbufSize_ ? pinbufPtr_ + offset : entryPtr(index);
    }

    Vel::String8 regionName() const;
    void openRegion();
    void refuseOtherSlots(const Vel::String8& name, const detail::RegionRecord& record) const;
    void reportOtherProcess(const Vel::String8& name) const;
    void reportOtherTable(const Vel::String8& name);
    void formatUnlessFormatted();
    DeviceOffset keyAt(Vel::U32 index) const;
    DeviceOffset keyAhead(Vel::U32 index) const;
    void showKeys();
    void recoverSlots();
    void recoverSlot(Vel::U32 index, DeviceOffset key);
    Vel::U32 takeFreeIndex();

    AgentId agentId_;
    CacheTableIndex tableId_;
    Vel::U32 size_;
    Vel::U32 entrySize_;
    Vel::BytePtr pinbufPtr_ = nullptr;
    Vel::U32 pinbufSize_ = 0;
    bool initialized_ = false;
    detail::RegionUse regionUse_;
    KeyToIndex keyToIndex_;
    FreeIndex freeIndex_;
};

// A new table, as by the constructor, with one reference.
BRIXO_API Vel::Ptr<CacheTable> cacheTableFactory(AgentId agentId, const CacheTableIndex& tableId,
                                                 Vel::U32 size, Vel::U32 entrySize);

constexpr auto CacheTable::schema() {
    using Read = Vel::BytePtr (CacheTable::*)(DeviceOffset) const;
    return Vel::entitySchema<CacheTable>("Brixo::CacheTable")
        .stored(130, "agentId", &CacheTable::agentId_)
        .stored(131, "tableId", &CacheTable::tableId_)
        .stored(132, "size", &CacheTable::size_)
        .stored(133, "entrySize", &CacheTable::entrySize_)
        .function(134, "entry", Read(&CacheTable::entry), "key")
        .function(135, "entryIs", &CacheTable::entryIs, "key", "data")
        .function(136, "entryDel", &CacheTable::entryDel, "key")
        .function(137, "entry_py", &CacheTable::entry_py, "key")
        .function(138, "entryIs_py", &CacheTable::entryIs_py, "key", "data")
        .stored(139, "pinbufPtr", &CacheTable::pinbufPtr_, &CacheTable::pinbufPtrIs)
        .stored(140, "pinbufSize", &CacheTable::pinbufSize_, &CacheTable::pinbufSizeIs)
        .function(141, "entryPtr", &CacheTable::entryPtr, "index")
        .collection(142, "keyToIndex", &CacheTable::keyToIndex_)
        .collection(143, "freeIndex", &CacheTable::freeIndex_)
        .procedure(144, "doRestart", &CacheTable::doRestart)
        .stored(145, "initialized", &CacheTable::initialized_, &CacheTable::initializedIs)
        .procedure(146, "handleInitialized", &CacheTable::handleInitialized)
        .constructedFrom("agentId", "tableId", "size", "entrySize");
}

} // namespace Brixo
