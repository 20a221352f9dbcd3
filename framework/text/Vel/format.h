// format.h - printf-style text as a String8.
#pragma once

#include <Vel/Export.h>
#include <Vel/String8.h>

namespace Vel {

// The text of any length that printf would write for `pattern` and the arguments; the compiler
// checks them against each other. One allocation at most. Throws RangeException when an argument
// cannot be written in the process's locale, or when the text would be longer than INT_MAX.
[[gnu::format(printf, 1, 2)]] VEL_API String8 format(const char* pattern, ...);

} // namespace Vel
