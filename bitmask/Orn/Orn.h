// Orn.h - everything of this folder: bit ids, masks of 64 bits, and their iterator.
#pragma once

#include <Orn/BitmaskTypes.h>
#include <Orn/U64BitmaskIter.h>
