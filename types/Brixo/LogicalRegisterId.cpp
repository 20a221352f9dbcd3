#include <Brixo/LogicalRegisterId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(LogicalRegisterId)

} // namespace Brixo
