// PtrTrack.h - leak tracker: knows, while it is on, which objects are alive and which are kept on
// purpose.
#pragma once

#include <Vel/Export.h>

namespace Vel {

class PtrInterface;

class VEL_API PtrTrack {
public:
    // Read by every allocation and deletion of a PtrInterface; clear by default.
    static bool ptrifTrackOn_;

    // The object at this address is deleted. Called only when ptrifTrackOn_ is set.
    static void ptrifDel(void* object);
    // The object is deliberately kept for the life of the process.
    static void ptrifLeak(const PtrInterface* object);
};

} // namespace Vel
