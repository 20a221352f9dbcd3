#include <Orn/BitId.h>

#include <Vel/value/Define.h>

namespace Orn {

VEL_DEFINE_VALUE(BitId)

} // namespace Orn
