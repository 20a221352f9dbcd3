#include <Brixo/ResourceType.h>

#include <Vel/value/DefineEnum.h>

namespace Brixo {

VEL_DEFINE_ENUM(ResourceType)

} // namespace Brixo
