// RegionUse.h - one table's entry in the process's list of who uses which region.
//
// Identity: a region is the address where it is mapped: pinbuf maps it once in a process, and never
//           unmaps it. So an entry stays, too, and a later table of the same identity takes it
//           again.
// Fork:     a child has copies of its parent's tables, which it does not use: their entries do not
//           count there.
// Cost:     beginning walks over the regions that this process has used.
// Threads:  tables of different threads may begin and end at the same time, without a lock. Of two
//           that begin at once on one region at least one sees the other.
// ABI:      layout, within CacheTable.
// Test: CacheTableOwners_test.cpp.
#pragma once

#include <Brixo/CacheTableIndex.h>
#include <optional>

namespace Brixo::detail {

class RegionUse {
public:
    RegionUse() noexcept = default;
    RegionUse(const RegionUse&) = delete;
    RegionUse& operator=(const RegionUse&) = delete;

    ~RegionUse() { end(); }

    // From now on the table `user` uses this region, and no other. Returns the identity of another
    // table that does so already, if there is one. Throws std::bad_alloc and uses none.
    std::optional<CacheTableIndex> begin(const CacheTableIndex& user, const void* region);

    void end() noexcept;

private:
    struct Entry;

    static Entry& entryOf(const CacheTableIndex& user, const void* region);

    Entry* entry_ = nullptr; // null: uses no region
};

} // namespace Brixo::detail
