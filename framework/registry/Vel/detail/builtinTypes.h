// builtinTypes.h - the types that no module brings: numbers, pointers, and the class of all
// objects. Not installed.
#pragma once

#include <vector>

namespace Vel {

class VelType;

namespace detail {

// Defined beside Builtin, above the registry: a descriptor of a number is made as that of any other
// value.
std::vector<VelType*> builtinTypes();

} // namespace detail

} // namespace Vel
