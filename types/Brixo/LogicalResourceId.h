// LogicalResourceId.h - a table or register of a device, as requesters name it: its kind and a
// 64-bit number. See ResourceIdOf.h.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/ResourceIdOf.h>
#include <Brixo/ResourceType.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API LogicalResourceId : public ResourceIdOf<LogicalResourceId> {
public:
    VEL_VALUE(LogicalResourceId)
    using ResourceIdOf::ResourceIdOf;
    constexpr LogicalResourceId() noexcept = default;

    static constexpr auto schema() { return schemaNamed("Brixo::LogicalResourceId"); }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalResourceId);

} // namespace Brixo
