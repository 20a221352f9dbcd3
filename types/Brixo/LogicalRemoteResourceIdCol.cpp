#include <Brixo/LogicalRemoteResourceIdCol.h>

#include <Vel/value/ObjectType.h>

namespace Brixo {

VEL_DEFINE_ENTITY(LogicalRemoteResourceIdCol)

LogicalRemoteResourceIdCol::LogicalRemoteResourceIdCol() = default;

LogicalRemoteResourceIdCol::~LogicalRemoteResourceIdCol() = default;

Vel::Ptr<LogicalRemoteResourceIdCol> logicalRemoteResourceIdColFactory() {
    return new LogicalRemoteResourceIdCol;
}

} // namespace Brixo
