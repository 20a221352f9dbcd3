#include <Vel/forcePointerAccessH.h>

namespace Vel {

void forcePointerAccessH(const void*) noexcept {}

} // namespace Vel
