#include <Vel/GenericIf.h>

namespace Vel {

GenericIf::~GenericIf() = default;

} // namespace Vel
