// PhysicalRegisterId.h - a PhysicalResourceId id whose kind is registerResource.
//
// Reading a text takes the kind that the text gives, invalidResource if it gives none; printed texts always give it.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>

namespace Brixo {

class BRIXO_API PhysicalRegisterId
    : public Vel::Refinement<PhysicalRegisterId, PhysicalResourceId> {
public:
    VEL_VALUE(PhysicalRegisterId)

    constexpr PhysicalRegisterId() noexcept : PhysicalRegisterId(0) {}

    constexpr explicit PhysicalRegisterId(Vel::U64 id) noexcept
        : Refinement(ResourceType::registerResource, id) {}

    static constexpr auto schema() {
        return Vel::schemaOf<PhysicalResourceId>.refinedAs<PhysicalRegisterId>("Brixo::PhysicalRegisterId").constructedFrom("id");
    }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalRegisterId);

} // namespace Brixo
