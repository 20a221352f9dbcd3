#include <Brixo/UserMode.h>

#include <Vel/value/DefineEnum.h>

namespace Brixo {

VEL_DEFINE_ENUM(UserMode)

} // namespace Brixo
