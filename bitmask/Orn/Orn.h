// Orn.h - everything of this folder: bit ids, masks of 64 bits, and their iterator.
//
// Test: none; gathers headers.
#pragma once

#include <Orn/BitmaskTypes.h>
#include <Orn/U64BitmaskIter.h>
