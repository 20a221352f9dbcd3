#include <Brixo/Command.h>

#include <Vel/value/DefineEnum.h>

namespace Brixo {

VEL_DEFINE_ENUM(Command)

} // namespace Brixo
