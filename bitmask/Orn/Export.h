// Export.h - what the bit masks show to clients of the library that they ship in.
//
// Test: none; one macro.
#pragma once

#define ORN_API __attribute__((visibility("default")))
