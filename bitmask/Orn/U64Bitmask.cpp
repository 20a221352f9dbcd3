#include <Orn/U64Bitmask.h>

#include <Vel/value/Define.h>

namespace Orn {

VEL_DEFINE_VALUE(U64Bitmask)

} // namespace Orn
