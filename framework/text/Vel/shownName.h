// shownName.h - a name that somebody wrote, fit for a message.
#pragma once

#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/String8.h>

namespace Vel {

// The name; of one with more than 64 bytes the first 64 and three dots: a message stays a message
// whatever was written.
VEL_API String8 shownName(Name written);

} // namespace Vel
