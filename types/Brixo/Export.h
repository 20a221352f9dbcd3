// Export.h - what libBrixoTypes shows to its clients. Everything else in the library is hidden.
//
// Test: none; one macro.
#pragma once

#define BRIXO_API __attribute__((visibility("default")))
