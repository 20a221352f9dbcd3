// LogicalRegisterId.h - a LogicalResourceId id whose kind is registerResource.
//
// Reading a text takes the kind that the text gives, invalidResource if it gives none; printed texts always give it.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/LogicalResourceId.h>

namespace Brixo {

class BRIXO_API LogicalRegisterId : public Vel::Refinement<LogicalRegisterId, LogicalResourceId> {
public:
    VEL_VALUE(LogicalRegisterId)

    constexpr LogicalRegisterId() noexcept : LogicalRegisterId(0) {}

    constexpr explicit LogicalRegisterId(Vel::U64 id) noexcept
        : Refinement(ResourceType::registerResource, id) {}

    static constexpr auto schema() {
        return Vel::schemaOf<LogicalResourceId>.refinedAs<LogicalRegisterId>("Brixo::LogicalRegisterId").constructedFrom("id");
    }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalRegisterId);

} // namespace Brixo
