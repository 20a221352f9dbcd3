// readValue.h - reads one T at the cursor, by the reader that T has: sequenceToValue(it, end, T*),
// found by argument lookup for types of other namespaces, or else T's parsing constructor T(it,
// end).
//
// ABI: inline code alone.
#pragma once

#include <Vel/String8.h>
#include <Vel/sequenceToValue.h>

namespace Vel::detail {

template <class T>
void readValue(String8::IteratorConst& it, const String8::IteratorConst& end, T* value) {
    if constexpr (requires { sequenceToValue(it, end, value); })
        sequenceToValue(it, end, value);
    else
        *value = T(it, end);
}

} // namespace Vel::detail
