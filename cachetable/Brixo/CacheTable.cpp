#include <Brixo/CacheTable.h>

#include <Brixo/RegionLayout.h>
#include <Brixo/detail/OptionalPinbuf.h>
#include <Brixo/detail/RegionRecord.h>
#include <Ferrolog/Trace.h>
#include <Vel/Assert.h>
#include <Vel/TraceHandle.h>
#include <Vel/format.h>
#include <Vel/traceHelper.h>
#include <Vel/value/ObjectType.h>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <ios>
#include <memory>
#include <optional>
#include <pinbuf/pinbuf.h>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace Brixo {

VEL_DEFINE_ENTITY(CacheTable)

using Vel::BytePtr;
using Vel::U32;
using Vel::U64;
using Vel::U8;

namespace {

constexpr unsigned traceAnomaly = 1;
constexpr unsigned traceEntry = 8;
constexpr unsigned traceDetail = 9;

// Never destroyed: tables may outlive the static objects of this library.
const Vel::TraceHandle& trace() {
    static const Vel::TraceHandle& handle = *new Vel::TraceHandle("BrixoCacheTable", true);
    return handle;
}

// Who owns the region, for people to read.
const char* ownerName() {
    const char* name = std::getenv("AGENT_PROCESS_NAME");
    return name != nullptr ? name : "@BrixoCacheTable";
}

// Who else has the region: for people to read, and to tell a restart of theirs from a stranger.
std::string otherProcess(const pinbuf_holder& holder) {
    std::string text = holder.process != 0 ? "process " + std::to_string(holder.process)
                                           : "a process in another name space";
    text.append(" of owner \"").append(holder.owner).append("\"");
    if (std::string_view(holder.owner) != ownerName())
        text.append("; this one is \"").append(ownerName()).append("\"");
    return text;
}

std::string otherTable(const CacheTableIndex& id, const CacheTableIndex& other) {
    std::ostringstream text;
    text << "another table of this process";
    if (id != other)
        text << ": resource " << other.resourceId() << " has the hash of " << id.resourceId();
    return text.str();
}

bool isUnused(DeviceOffset key) { return key.value() == RegionLayout::unusedKeyWord; }

} // namespace

CacheTable::CacheTable(AgentId agentId, const CacheTableIndex& tableId, U32 size, U32 entrySize)
    : agentId_(agentId), tableId_(tableId), size_(size), entrySize_(entrySize) {
    handleInitialized();
}

CacheTable::~CacheTable() = default;

Vel::Ptr<CacheTable> cacheTableFactory(AgentId agentId, const CacheTableIndex& tableId, U32 size,
                                       U32 entrySize) {
    return new CacheTable(agentId, tableId, size, entrySize);
}

void CacheTable::handleInitialized() {
    VEL_TRACE(trace(), traceEntry, "CacheTable::handleInitialized");
    FERROLOG("BrixoCacheTable", "CacheTable::"
                                "handleInitialized");
    openRegion();
    formatUnlessFormatted();
    doRestart();
    initializedIs(true);
}

// The resource alone stands for the table here: the device has a number of its own in the name.
Vel::String8 CacheTable::regionName() const {
    return Vel::format("CacheTable-%u-%u-%u", unsigned{agentId_.value()},
                       unsigned{tableId_.devId().value()}, tableId_.resourceId().hash());
}

void CacheTable::openRegion() {
    const Vel::String8 name = regionName();
    pinbufSizeIs(RegionLayout::regionBytes(entrySize_, size_));
    FERROLOG("BrixoCacheTable", "DMA memory size ", pinbufSize_);
    VEL_ASSERT_AS("pa", pinbufSize() != 0, size(), entrySize()); // 2^32 bytes
    VEL_ASSERT_AS("offset < pinbufSize()", RegionLayout::fits(entrySize_, size_), size(),
                  entrySize(), pinbufSize());
    const auto record = detail::RegionRecord::of(name.charPtr());
    refuseOtherSlots(name, record);
    const unsigned pa = pinbuf_alloc_func(name.charPtr(), pinbufSize_, ownerName());
    VEL_ASSERT_AS("pa", pa != 0);
    if (record.sizeBytes != 0 && record.sizeBytes != pinbufSize_)
        VEL_TRACE(trace(), traceAnomaly,
                  "Region " << name << " has another size: " << record.sizeBytes
                            << " bytes on record, " << pinbufSize_ << " bytes asked for");
    VEL_TRACE(trace(), traceDetail,
              "DMA memory physical address for cache table " << name << " 0x" << std::hex << pa);
    pinbufPtrIs(static_cast<BytePtr>(pinbuf_map(name.charPtr(), 1, 0, 0)));
    VEL_ASSERT_AS("pinbufPtr()", pinbufPtr() != nullptr);
    reportOtherProcess(name);
    reportOtherTable(name);
}

// Slots of another size in this region would be taken for keys, and written over.
void CacheTable::refuseOtherSlots(const Vel::String8& name,
                                  const detail::RegionRecord& record) const {
    if (size_ == 0 || !record.isMadeForOtherSlots(entrySize_)) return;
    const U32 slotBytes = RegionLayout::slotBytes(entrySize_);
    VEL_TRACE(trace(), traceAnomaly,
              "Region " << name << " was made for slots of another size: " << record.sizeBytes
                        << " bytes on record, " << pinbufSize_ << " bytes asked for, " << slotBytes
                        << " a slot");
    VEL_ASSERT_AS("pa", false, record.sizeBytes, pinbufSize(), slotBytes);
}

// Nobody is refused: an agent may be started again while the old one dies.
void CacheTable::reportOtherProcess(const Vel::String8& name) const {
    pinbuf_holder holder{};
    if (pinbuf_hold == nullptr || pinbuf_hold(name.charPtr(), &holder) != 0) return;
    if (holder.process == ::getpid()) return;
    VEL_TRACE(trace(), traceAnomaly,
              "Region " << name << " is in use already, by " << otherProcess(holder));
}

void CacheTable::reportOtherTable(const Vel::String8& name) {
    const std::optional<CacheTableIndex> other = regionUse_.begin(tableId_, pinbufPtr_);
    if (!other) return;
    VEL_TRACE(trace(), traceAnomaly,
              "Region " << name << " is in use already, by " << otherTable(tableId_, *other));
}

// Magic first, flag last: whoever finds the region after a kill in between formats it again.
void CacheTable::formatUnlessFormatted() {
    auto* header = reinterpret_cast<RegionLayout::Header*>(pinbufPtr());
    if (header->magic == RegionLayout::magic && header->formatted != 0) return;
    if (!RegionLayout::isFresh(*header))
        VEL_TRACE(trace(), traceAnomaly,
                  "Formatting region " << regionName() << " anew, over magic 0x" << std::hex
                                       << header->magic << ", flag 0x" << U32{header->formatted});
    header->magic = RegionLayout::magic;
    RegionLayout::storesInOrder();
    for (U32 index = 0; index < size_; ++index) {
        const BytePtr ptr = entryPtr(index);
        VEL_ASSERT_AS("ptr", ptr != nullptr, index);
        RegionLayout::writeKeyWord(slot(index), RegionLayout::unusedKeyWord);
    }
    RegionLayout::storesInOrder();
    header->formatted = 1;
}

void CacheTable::doRestart() {
    VEL_TRACE(trace(), traceEntry, "CacheTable::doRestart");
    FERROLOG("BrixoCacheTable", "CacheTable::"
                                "doRestart");
    keyToIndexDelAll();
    freeIndexDelAll();
    try {
        recoverSlots();
    } catch (...) { // no memory: half of the slots in the maps would be worse than none
        keyToIndexDelAll();
        freeIndexDelAll();
        throw;
    }
    VEL_ASSERT_AS("keyToIndexs() + freeIndexs() == size()", keyToIndexs() + freeIndexs() == size(),
                  keyToIndexs(), freeIndexs(), size());
}

void CacheTable::recoverSlots() {
    // Either may come to hold every slot; room that nobody takes is not touched.
    freeIndex_.reserve(size_);
    keyToIndex_.reserve(size_);
    showKeys();
    // So far ahead is fetched where keys will go.
    constexpr U32 ahead = 16;
    for (U32 index = 0; index < size_; ++index) {
        if (index + ahead < size_) keyToIndex_.fetch(keyAhead(index + ahead));
        const DeviceOffset key = keyAt(index);
        if (isUnused(key))
            freeIndex_.add(index, true);
        else
            recoverSlot(index, key);
    }
}

// A map learns from its first members by which bits to tell the others apart, and learns anew
// whenever one comes that differs sooner: registers lie some bytes apart, and neighbouring slots
// have keys in the map's own order, which differ ever sooner. A few keys from all over the table,
// by multiples of the golden ratio, come and go before the others, so that they find what fits
// them.
void CacheTable::showKeys() {
    constexpr U32 mostLooks = 1024;
    constexpr U32 goldenRatio = 0x9e3779b9; // of the whole, 2^32
    std::array<DeviceOffset, 64> shown;
    U32 keys = 0;
    U32 place = 0; // of the whole
    for (U32 i = 0; i < std::min(size_ / 4, mostLooks) && keys < shown.size();
         ++i, place += goldenRatio) {
        const DeviceOffset key = keyAhead(static_cast<U32>(U64{place} * size_ >> 32));
        if (isUnused(key) || keyToIndex_.has(key)) continue;
        keyToIndex_.add(key, 0);
        shown[keys++] = key;
    }
    while (keys != 0) keyToIndex_.remove(shown[--keys]);
}

// The key word alone decides; the data are never looked at.
DeviceOffset CacheTable::keyAt(U32 index) const {
    const BytePtr ptr = slot(index);
    VEL_ASSERT_AS("ptr", ptr != nullptr, index);
    return DeviceOffset(RegionLayout::readKeyWord(ptr));
}

// The same for a slot whose turn has not come. One that is not whole inside the region looks
// unused: what to say of it is for its turn, when every slot before it is done.
DeviceOffset CacheTable::keyAhead(U32 index) const {
    const U32 offset = RegionLayout::slotOffset(entrySize_, index);
    const bool isInside =
        offset < pinbufSize_ && pinbufSize_ - offset >= RegionLayout::keyWordBytes;
    return DeviceOffset(isInside ? RegionLayout::readKeyWord(pinbufPtr_ + offset)
                                 : RegionLayout::unusedKeyWord);
}

void CacheTable::recoverSlot(U32 index, DeviceOffset key) {
    VEL_TRACE(trace(), traceDetail, "Recovered entry, index: " << index << " key: " << key);
    FERROLOG("BrixoCacheTable", "Recovered entry, index: ", index, " key: ", key.value());
    if (U32 old = 0; keyToIndex_.lookUp(key, old)) {
        VEL_TRACE(trace(), traceAnomaly,
                  "Discovered duplicate keys, old index: " << old << " new index: " << index);
        FERROLOG("BrixoCacheTable", "Discovered duplicate keys, old index: ", old,
                 " new index: ", index);
        RegionLayout::writeKeyWord(slot(index), RegionLayout::unusedKeyWord);
        freeIndex_.add(index, true);
        return;
    }
    keyToIndex_.add(key, index);
}

BytePtr CacheTable::entryPtr(U32 index) const {
    const U32 offset = RegionLayout::slotOffset(entrySize_, index);
    VEL_ASSERT_AS("offset < pinbufSize()", offset < pinbufSize_, index, offset);
    return pinbufPtr_ + offset;
}

void CacheTable::entryIs(DeviceOffset key, const unsigned char* data) {
    U32 index = 0;
    if (!keyToIndex_.lookUp(key, index)) {
        index = takeFreeIndex();
        try {
            keyToIndex_.add(key, index);
        } catch (...) {
            freeIndex_.add(index, true);
            throw;
        }
    }
    const BytePtr ptr = slot(index);
    RegionLayout::writeKeyWord(ptr, key.value());
    RegionLayout::storesInOrder();
    if (entrySize_ != 0) std::memcpy(ptr + RegionLayout::keyWordBytes, data, entrySize_);
    // A store of this entry is not put off until the next one's: it would seem completed and be
    // lost by a kill.
    RegionLayout::storesInOrder();
}

// The first one in the map's order.
U32 CacheTable::takeFreeIndex() {
    VEL_ASSERT_AS("freeIndexs() > 0", freeIndexs() > 0);
    return freeIndex_.takeFirst();
}

void CacheTable::entryDel(DeviceOffset key) {
    if (U32 index = 0; keyToIndex_.take(key, index)) freeIndexIs(index, true);
}

U64 CacheTable::entry_py(DeviceOffset key) const {
    U64 value = 0;
    if (const unsigned char* data = entry(key)) std::memcpy(&value, data, sizeof(value));
    return value;
}

void CacheTable::entryIs_py(DeviceOffset key, const U64& data) {
    VEL_ASSERT_AS("entrySize() >= sizeof( U64 )", entrySize() >= sizeof(U64));
    const auto scratch = std::make_unique<unsigned char[]>(entrySize_);
    std::memcpy(scratch.get(), &data, sizeof(data));
    entryIs(key, scratch.get());
}

Vel::Ptr<CacheTable::VelKeyToIndex> CacheTable::newKeyToIndex(DeviceOffset key, U32 index) {
    return keyToIndex_.create(key, index);
}

U32 CacheTable::keyToIndexDel(DeviceOffset key) {
    U32 index = 0;
    keyToIndex_.take(key, index);
    return index;
}

Vel::Ptr<CacheTable::VelFreeIndex> CacheTable::newFreeIndex(U32 index, bool value) {
    return freeIndex_.create(index, value);
}

unsigned CacheTable::auditErrors(unsigned level) const {
    unsigned errors = keyToIndex_.auditErrors(level) + freeIndex_.auditErrors(level);
    std::vector<U8> uses(size_); // of each slot: 0, 1, or 2 for more
    const auto use = [&](U32 index) {
        if (index >= size_)
            ++errors;
        else if (uses[index] < 2)
            ++uses[index];
    };
    for (const auto& [key, index] : keyToIndex_) use(index);
    for (const auto& [index, isFree] : freeIndex_)
        if (isFree || index >= size_) use(index);
    for (const U8 count : uses)
        if (count != 1) ++errors;
    return errors;
}

} // namespace Brixo
