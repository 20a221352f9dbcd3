// CacheTableIndex.h - which cache table of an agent: the device and the resource whose entries it
// caches.
#pragma once

#include <Brixo/DeviceId.h>
#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API CacheTableIndex : public Vel::Value<CacheTableIndex> {
public:
    VEL_VALUE(CacheTableIndex)

    constexpr CacheTableIndex() noexcept = default;

    constexpr CacheTableIndex(DeviceId devId, const PhysicalResourceId& resourceId) noexcept
        : devId_(devId), resourceId_(resourceId) {}

    constexpr DeviceId devId() const noexcept { return devId_; }

    constexpr void devIdIs(DeviceId devId) noexcept { devId_ = devId; }

    constexpr const PhysicalResourceId& resourceId() const noexcept { return resourceId_; }

    constexpr void resourceIdIs(const PhysicalResourceId& resourceId) noexcept {
        resourceId_ = resourceId;
    }

    // (devId << 16) + the resource's hash, modulo 2^32.
    constexpr Vel::U32 hash() const noexcept {
        return (Vel::U32{devId_.value()} << 16) + resourceId_.hash();
    }

    static constexpr auto schema() {
        return Vel::valueSchema<CacheTableIndex>("Brixo::CacheTableIndex")
            .stored(2, "devId", &CacheTableIndex::devId_, &CacheTableIndex::devIdIs)
            .stored(3, "resourceId", &CacheTableIndex::resourceId_, &CacheTableIndex::resourceIdIs)
            .hashedBy(Vel::Hash::none, 4);
    }

private:
    DeviceId devId_;
    PhysicalResourceId resourceId_;
};

VEL_VALUE_FUNCTIONS(BRIXO_API, CacheTableIndex);

} // namespace Brixo
