#include <Brixo/detail/RegionRecord.h>

#include <Brixo/RegionLayout.h>
#include <Brixo/detail/OptionalPinbuf.h>

namespace Brixo::detail {

using Vel::U32;

RegionRecord RegionRecord::of(const char* regionName) {
    RegionRecord record;
    if (pinbuf_find == nullptr) return record;
    const auto note = [](const pinbuf_region* region, void* context) {
        *static_cast<RegionRecord*>(context) = {region->size_bytes, region->made_here == 1};
        return 0;
    };
    pinbuf_find(regionName, note, &record);
    return record;
}

bool RegionRecord::isMadeForOtherSlots(U32 entrySize) const {
    if (!isMadeHere) return false;
    return sizeBytes < RegionLayout::headerBytes ||
           (sizeBytes - RegionLayout::headerBytes) % RegionLayout::slotBytes(entrySize) != 0;
}

} // namespace Brixo::detail
