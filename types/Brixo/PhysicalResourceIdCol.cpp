#include <Brixo/PhysicalResourceIdCol.h>

#include <Vel/value/ObjectType.h>

namespace Brixo {

VEL_DEFINE_ENTITY(PhysicalResourceIdCol)

PhysicalResourceIdCol::PhysicalResourceIdCol() = default;

PhysicalResourceIdCol::~PhysicalResourceIdCol() = default;

} // namespace Brixo
