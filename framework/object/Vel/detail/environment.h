// environment.h - what the environment says under a name.
//
// Rights: a program that has more rights than who starts it (set-user-id, set-group-id,
//         capabilities) takes nothing from the environment, which is its starter's.
#pragma once

#include <cstdlib>

namespace Vel::detail {

// Null where nothing is set. Borrowed from the environment.
inline const char* fromEnvironment(const char* name) noexcept { return ::secure_getenv(name); }

} // namespace Vel::detail
