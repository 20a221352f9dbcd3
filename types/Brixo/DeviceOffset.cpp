#include <Brixo/DeviceOffset.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(DeviceOffset)

} // namespace Brixo
