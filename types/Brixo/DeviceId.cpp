#include <Brixo/DeviceId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(DeviceId)

} // namespace Brixo
