// LogicalRegisterId.h - a LogicalResourceId whose kind is registerResource. See ResourceIdOf.h.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/ResourceIdOf.h>
#include <Brixo/ResourceType.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API LogicalRegisterId : public ResourceIdOfKind<LogicalRegisterId, LogicalResourceId,
                                                            ResourceType::registerResource> {
public:
    VEL_VALUE(LogicalRegisterId)
    using ResourceIdOfKind::ResourceIdOfKind;

    constexpr LogicalRegisterId() noexcept : LogicalRegisterId(0) {}

    static constexpr auto schema() { return schemaNamed("Brixo::LogicalRegisterId"); }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalRegisterId);

} // namespace Brixo
