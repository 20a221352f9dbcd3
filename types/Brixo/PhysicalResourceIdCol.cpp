#include <Brixo/PhysicalResourceIdCol.h>

namespace Brixo {

PhysicalResourceIdCol::PhysicalResourceIdCol() = default;

PhysicalResourceIdCol::~PhysicalResourceIdCol() = default;

} // namespace Brixo
