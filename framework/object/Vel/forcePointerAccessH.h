// forcePointerAccessH.h - keeps an inline accessor referenced.
#pragma once

#include <Vel/Export.h>

namespace Vel {

// Does nothing, out of sight of the caller's optimiser: an accessor whose address is given here is
// emitted and kept. No effect on any state; any thread, any pointer.
VEL_API void forcePointerAccessH(const void* accessor) noexcept;

} // namespace Vel
