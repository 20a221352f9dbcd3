// CacheTableTypes.h - each registered type of this folder, once, in the order of registration: see
// <Brixo/BrixoTypes.h>.
//
// Test: tests/reflection.
#pragma once

#include <Brixo/CacheTable.h>
#include <Brixo/CacheTableIndex.h>
#include <Vel/TypeList.h>

namespace Brixo {

using CacheTableTypes = Vel::TypeList<CacheTableIndex, CacheTable>;

} // namespace Brixo
