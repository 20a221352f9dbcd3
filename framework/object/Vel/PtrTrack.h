// PtrTrack.h - leak tracker: knows, while it is on, which objects are alive and which are kept on
// purpose.
//
// Use:     set ptrifTrackOn_, run, and ask alive(): objects made since then that nobody deleted and
//          nobody leaked on purpose. Setting it again after clear() starts anew.
// Cost:    off, one predicted branch at an object's birth and death; on, a lock and an ordered set.
// Threads: any; the switch itself is set while no other thread makes objects.
#pragma once

#include <Vel/Export.h>
#include <cstddef>

namespace Vel {

class PtrInterface;

class VEL_API PtrTrack {
public:
    // Read by every birth and death of a counted object; clear by default.
    static bool ptrifTrackOn_;

    // Called only while ptrifTrackOn_ is set: memory for an object was given out; the object there
    // is deleted; the object is deliberately kept for the life of the process. Addresses that are
    // not known are ignored.
    static void ptrifNew(void* object);
    static void ptrifDel(void* object) noexcept;
    static void ptrifLeak(const PtrInterface* object);

    // How many tracked objects are alive and not kept on purpose; and how many are kept.
    static std::size_t alive();
    static std::size_t leaked();
    // Forgets everything.
    static void clear();
};

} // namespace Vel
