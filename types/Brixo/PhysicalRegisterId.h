// PhysicalRegisterId.h - a PhysicalResourceId whose kind is registerResource. See ResourceIdOf.h.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>
#include <Brixo/ResourceIdOf.h>
#include <Brixo/ResourceType.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API PhysicalRegisterId : public ResourceIdOfKind<PhysicalRegisterId, PhysicalResourceId,
                                                             ResourceType::registerResource> {
public:
    VEL_VALUE(PhysicalRegisterId)
    using ResourceIdOfKind::ResourceIdOfKind;

    constexpr PhysicalRegisterId() noexcept : PhysicalRegisterId(0) {}

    static constexpr auto schema() { return schemaNamed("Brixo::PhysicalRegisterId"); }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalRegisterId);

} // namespace Brixo
