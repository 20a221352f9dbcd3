#include <Brixo/LogicalResourceId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(LogicalResourceId)

} // namespace Brixo
