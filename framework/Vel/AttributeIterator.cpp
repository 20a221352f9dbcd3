#include <Vel/AttributeIterator.h>

namespace Vel {

AttributeIterator::~AttributeIterator() = default;

} // namespace Vel
