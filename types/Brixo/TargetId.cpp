#include <Brixo/TargetId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(TargetId)

} // namespace Brixo
