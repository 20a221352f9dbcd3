// RegionRecord.h - what pinbuf has on record of a region before a table asks for it. Not installed.
//
// Test: CacheTableGeometry_test.cpp.
#pragma once

#include <Vel/Integers.h>

namespace Brixo::detail {

struct RegionRecord {
    Vel::U32 sizeBytes = 0;  // 0: there is no such region, or the platform's pinbuf cannot tell
    bool isMadeHere = false; // made by pinbuf with exactly this size: some table's header and slots

    static RegionRecord of(const char* regionName);

    // Whether no number of slots with so many bytes of data each makes a region of this size, and
    // yet some table's made it.
    bool isMadeForOtherSlots(Vel::U32 entrySize) const;
};

} // namespace Brixo::detail
