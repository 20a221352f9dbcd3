#include <Brixo/DalId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(DalId)

} // namespace Brixo
