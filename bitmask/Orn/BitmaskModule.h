// BitmaskModule.h - registers the bit id and the 64-bit mask.
//
// Test: tests/reflection.
#pragma once

#include <Orn/Export.h>

// Runs when the library is loaded; effective once. Does nothing, and can be called again, while the
// registrar is inactive.
extern "C" ORN_API void velInitU64Bitmask();
