// PhysicalTableId.h - a PhysicalResourceId whose kind is tableResource. See ResourceIdOf.h.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Brixo/ResourceIdOf.h>
#include <Brixo/ResourceType.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API PhysicalTableId
    : public ResourceIdOfKind<PhysicalTableId, PhysicalResourceId, ResourceType::tableResource> {
public:
    VEL_VALUE(PhysicalTableId)
    using ResourceIdOfKind::ResourceIdOfKind;

    constexpr PhysicalTableId() noexcept : PhysicalTableId(0) {}

    static constexpr auto schema() { return schemaNamed("Brixo::PhysicalTableId"); }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalTableId);

} // namespace Brixo
