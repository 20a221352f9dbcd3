#include <Brixo/CacheTableIndex.h>

#include <Vel/value/Define.h>

namespace Brixo {

VEL_DEFINE_VALUE(CacheTableIndex)

} // namespace Brixo
