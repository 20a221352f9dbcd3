#include <Brixo/PhysicalResourceId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(PhysicalResourceId)

} // namespace Brixo
