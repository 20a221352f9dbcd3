// PhysicalTableId.h - a PhysicalResourceId id whose kind is tableResource.
//
// Reading a text takes the kind that the text gives, invalidResource if it gives none; printed texts always give it.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/PhysicalResourceId.h>

namespace Brixo {

class BRIXO_API PhysicalTableId : public Vel::Refinement<PhysicalTableId, PhysicalResourceId> {
public:
    VEL_VALUE(PhysicalTableId)

    constexpr PhysicalTableId() noexcept : PhysicalTableId(0) {}

    constexpr explicit PhysicalTableId(Vel::U64 id) noexcept
        : Refinement(ResourceType::tableResource, id) {}

    static constexpr auto schema() {
        return Vel::schemaOf<PhysicalResourceId>.refinedAs<PhysicalTableId>("Brixo::PhysicalTableId").constructedFrom("id");
    }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, PhysicalTableId);

} // namespace Brixo
