#include <Vel/ReflectionException.h>

namespace Vel {

ReflectionException::~ReflectionException() = default;

} // namespace Vel
