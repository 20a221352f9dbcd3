#include <Brixo/PhysicalRegisterId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(PhysicalRegisterId)

} // namespace Brixo
