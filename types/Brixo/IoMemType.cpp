#include <Brixo/IoMemType.h>

#include <Vel/value/DefineEnum.h>

namespace Brixo {

VEL_DEFINE_ENUM(IoMemType)

} // namespace Brixo
