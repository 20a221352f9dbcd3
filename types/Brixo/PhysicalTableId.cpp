#include <Brixo/PhysicalTableId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(PhysicalTableId)

} // namespace Brixo
