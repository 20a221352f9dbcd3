#include <Brixo/AgentId.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(AgentId)

} // namespace Brixo
