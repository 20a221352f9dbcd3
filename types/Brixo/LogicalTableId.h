// LogicalTableId.h - a LogicalResourceId id whose kind is tableResource.
//
// Reading a text takes the kind that the text gives, invalidResource if it gives none; printed texts always give it.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/LogicalResourceId.h>

namespace Brixo {

class BRIXO_API LogicalTableId : public Vel::Refinement<LogicalTableId, LogicalResourceId> {
public:
    VEL_VALUE(LogicalTableId)

    constexpr LogicalTableId() noexcept : LogicalTableId(0) {}

    constexpr explicit LogicalTableId(Vel::U64 id) noexcept
        : Refinement(ResourceType::tableResource, id) {}

    static constexpr auto schema() {
        return Vel::schemaOf<LogicalResourceId>.refinedAs<LogicalTableId>("Brixo::LogicalTableId").constructedFrom("id");
    }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalTableId);

} // namespace Brixo
