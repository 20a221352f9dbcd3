#include <Brixo/LogicalRemoteResourceIdCol.h>

namespace Brixo {

LogicalRemoteResourceIdCol::LogicalRemoteResourceIdCol() = default;

LogicalRemoteResourceIdCol::~LogicalRemoteResourceIdCol() = default;

Vel::Ptr<LogicalRemoteResourceIdCol> logicalRemoteResourceIdColFactory() {
    return new LogicalRemoteResourceIdCol;
}

} // namespace Brixo
