#include <Vel/VelType.h>

namespace Vel {

VelType::~VelType() = default;

} // namespace Vel
