#include <Brixo/LogicalTableId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(LogicalTableId)

} // namespace Brixo
