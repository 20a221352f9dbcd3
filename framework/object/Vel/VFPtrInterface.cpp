#include <Vel/VFPtrInterface.h>

namespace Vel {

constinit bool VFPtrInterface::enableThreadSafePointers = false;

} // namespace Vel
