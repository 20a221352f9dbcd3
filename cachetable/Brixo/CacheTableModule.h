// CacheTableModule.h - registers the cache table and its index.
//
// Test: tests/reflection.
#pragma once

#include <Brixo/Export.h>

// Runs when the library is loaded; effective once. Does nothing, and can be called again, while the
// registrar is inactive.
extern "C" BRIXO_API void velInitBrixoCacheTable();
