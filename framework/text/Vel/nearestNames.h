// nearestNames.h - which known names somebody may have meant who wrote another one.
#pragma once

#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/String8.h>
#include <vector>

namespace Vel {

// The up to three of `known` with the fewest characters to change, insert, drop or swap with a
// neighbour, the nearest first, those as near in their order; only what is nearer than a third of
// the longer name. "value, valid"; empty for none. O(known * length^2), the length being that of
// the known names, however long `written` is: for messages. The distance is the restricted
// Damerau-Levenshtein distance ("optimal string alignment").
VEL_API String8 nearestNames(Name written, const std::vector<Name>& known);

} // namespace Vel
