#include <Vel/VelAttr.h>

namespace Vel {

VelAttr::~VelAttr() = default;

} // namespace Vel
