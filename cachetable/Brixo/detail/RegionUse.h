// RegionUse.h - which tables of this process use one region.
//
// Identity: a region is the address where it is mapped; pinbuf maps it once in a process.
// Fork:     a child has copies of its parent's tables, which it does not use: they do not count there.
// Cost:     beginning and ending walk over the process's tables.
// Threads:  tables of different threads may begin and end at the same time.
#pragma once

#include <Brixo/CacheTableIndex.h>
#include <optional>
#include <sys/types.h>

namespace Brixo::detail {

class RegionUse {
public:
    // `user`: the table's identity, which lives as long as this.
    explicit RegionUse(const CacheTableIndex& user) noexcept : user_(user) {}

    RegionUse(const RegionUse&) = delete;
    RegionUse& operator=(const RegionUse&) = delete;

    ~RegionUse() { end(); }

    // From now on the table uses this region, and no other. Returns the identity of another one that does so already, if
    // there is one.
    std::optional<CacheTableIndex> begin(const void* region);

    void end() noexcept;

private:
    const CacheTableIndex& user_;
    const void* region_ = nullptr; // null: uses none, and stands in no list
    pid_t process_ = 0;
    RegionUse* next_ = nullptr;
};

} // namespace Brixo::detail
