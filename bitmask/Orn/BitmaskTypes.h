// BitmaskTypes.h - each registered type of this folder, once, in the order of registration: see
// <Brixo/BrixoTypes.h>.
//
// Test: tests/reflection.
#pragma once

#include <Orn/BitId.h>
#include <Orn/U64Bitmask.h>
#include <Vel/TypeList.h>

namespace Orn {

using BitmaskTypes = Vel::TypeList<BitId, U64Bitmask>;

} // namespace Orn
