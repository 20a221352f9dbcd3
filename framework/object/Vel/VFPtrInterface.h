// VFPtrInterface.h - what every counted object has before its count: a virtual table, the counting
// mode, its memory.
//
// Memory:  birth and death are inline down to the thread's list of free places; see
//          detail/ObjectPages.h.
// Threads: enableThreadSafePointers is read by every reference operation, without synchronisation.
//          Set it before the first object is shared between threads and leave it set.
#pragma once

#include <Vel/Export.h>
#include <Vel/PtrTrack.h>
#include <Vel/detail/ObjectPages.h>
#include <cstddef>

namespace Vel {

class VEL_API VFPtrInterface {
public:
    VFPtrInterface(const VFPtrInterface&) = default;
    VFPtrInterface& operator=(const VFPtrInterface&) = default;
    virtual ~VFPtrInterface() = default;

    // Clear (the default): counts are plain words. Set: every increment and decrement is an atomic
    // read-modify-write.
    static bool enableThreadSafePointers;

    // Memory for an object of exactly `size` bytes, from per-thread lists by size class. Throws
    // std::bad_alloc.
    static void* operator new(std::size_t size) {
        void* const object = detail::ObjectPages::allocate(size);
        if (PtrTrack::ptrifTrackOn_) [[unlikely]]
            PtrTrack::ptrifNew(object);
        return object;
    }

    static void* operator new(std::size_t, void* place) noexcept { return place; }

    // Gives an object back to these lists. `size` is the object's exact size; the virtual
    // destructor supplies it. Any thread may free what another made.
    static void operator delete(void* object, std::size_t size) noexcept {
        if (PtrTrack::ptrifTrackOn_) [[unlikely]]
            PtrTrack::ptrifDel(object);
        detail::ObjectPages::deallocate(object, size);
    }

    static void operator delete(void*, void*) noexcept {} // pairs with placement, frees nothing

protected:
    VFPtrInterface() = default;
};

static_assert(sizeof(bool) == 1);

} // namespace Vel
