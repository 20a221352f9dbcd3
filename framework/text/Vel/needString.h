// needString.h - what must come next in a text.
//
// Cursor: moves behind what was required; a function that throws has not moved it.
#pragma once

#include <Vel/Export.h>
#include <Vel/String8.h>

namespace Vel {

// Consumes `pattern` or throws RangeException. A blank in the pattern stands for any number of
// blanks, also none; every other character stands for itself:
//     " Value"   skips blanks, then Value must stand there
//     "} "       } must stand at the cursor; blanks after it are skipped
//     " "        skips blanks, never throws
// The message names the first word of the pattern that is missing: expected "Value" at column 0,
// found "12".
VEL_API void needString(String8::IteratorConst& it, const String8::IteratorConst& end,
                        const char* pattern);

// The text ends at the cursor; otherwise throws RangeException with
//     junk at column 4 deserializing True!!
VEL_API void needEnd(const String8::IteratorConst& it, const String8::IteratorConst& end,
                     const String8& wholeText);

} // namespace Vel
