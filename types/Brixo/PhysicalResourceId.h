// PhysicalResourceId.h - a table or register of a device, as the hardware names it: its kind and a
// 64-bit number. See ResourceIdOf.h.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/ResourceIdOf.h>
#include <Brixo/ResourceType.h>
#include <Vel/Integers.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API PhysicalResourceId : public ResourceIdOf<PhysicalResourceId> {
public:
    VEL_VALUE(PhysicalResourceId)
    using ResourceIdOf::ResourceIdOf;
    constexpr PhysicalResourceId() noexcept = default;

    static constexpr auto schema() { return schemaNamed("Brixo::PhysicalResourceId"); }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalResourceId);

} // namespace Brixo
