// Export.h - what libVel shows to its clients. Everything else in the library is hidden.
//
// Test: none; one macro.
#pragma once

#define VEL_API __attribute__((visibility("default")))
