#include <Brixo/LogicalRemoteResourceId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(LogicalRemoteResourceId)

} // namespace Brixo
