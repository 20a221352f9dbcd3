// Export.h - what libVel shows to its clients. Everything else in the library is hidden.
#pragma once

#define VEL_API __attribute__((visibility("default")))
