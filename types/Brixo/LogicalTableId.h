// LogicalTableId.h - a LogicalResourceId whose kind is tableResource. See ResourceIdOf.h.
#pragma once

#include <Brixo/Export.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/ResourceIdOf.h>
#include <Brixo/ResourceType.h>
#include <Vel/Value.h>

namespace Brixo {

class BRIXO_API LogicalTableId
    : public ResourceIdOfKind<LogicalTableId, LogicalResourceId, ResourceType::tableResource> {
public:
    VEL_VALUE(LogicalTableId)
    using ResourceIdOfKind::ResourceIdOfKind;

    constexpr LogicalTableId() noexcept : LogicalTableId(0) {}

    static constexpr auto schema() { return schemaNamed("Brixo::LogicalTableId"); }
};

VEL_VALUE_FUNCTIONS(BRIXO_API, LogicalTableId);

} // namespace Brixo
