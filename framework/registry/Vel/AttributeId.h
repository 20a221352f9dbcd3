// AttributeId.h - number of an attribute within its type, as the log, reflection and notifications
// use it.
//
// Ranges: 0 is the key of a collection's member, 1 is never given out; value types count from 2,
//         entity types from 130. An enumerator's id is its value.
// Test: none; one name.
#pragma once

#include <Vel/Integers.h>

namespace Vel {

using AttributeId = U32;

} // namespace Vel
