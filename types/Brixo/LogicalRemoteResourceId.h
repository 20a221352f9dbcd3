// LogicalRemoteResourceId.h - a logical resource and which bits of its data a remote requester
// touches.
//
// Hash: that of the id alone, so ids with different masks hash alike.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/RequesterDataMask.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API LogicalRemoteResourceId : public Vel::Value<LogicalRemoteResourceId> {
public:
    VEL_VALUE(LogicalRemoteResourceId)

    LogicalRemoteResourceId() noexcept = default;

    LogicalRemoteResourceId(const LogicalResourceId& id, const RequesterDataMask& mask)
        : id_(id), mask_(mask) {}

    const LogicalResourceId& id() const noexcept { return id_; }

    const RequesterDataMask& mask() const noexcept { return mask_; }

    Vel::U32 hash() const noexcept { return id_.hash(); }

    static constexpr auto schema() {
        return Vel::valueSchema<LogicalRemoteResourceId>("Brixo::LogicalRemoteResourceId")
            .stored(2, "id", &LogicalRemoteResourceId::id_)
            .stored(3, "mask", &LogicalRemoteResourceId::mask_)
            .hashedBy(Vel::Hash::none, 4)
            .constructedFrom("id", "mask");
    }

private:
    LogicalResourceId id_;
    RequesterDataMask mask_;
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalRemoteResourceId);

} // namespace Brixo
