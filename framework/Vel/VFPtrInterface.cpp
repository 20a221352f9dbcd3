#include <Vel/VFPtrInterface.h>

#include <Vel/PtrTrack.h>
#include <Vel/detail/ObjectHeap.h>

namespace Vel {

constinit bool VFPtrInterface::enableThreadSafePointers = false;

void* VFPtrInterface::operator new(std::size_t size) {
    void* object = detail::ObjectHeap::allocate(size);
    if (PtrTrack::ptrifTrackOn_) [[unlikely]]
        PtrTrack::ptrifNew(object);
    return object;
}

void VFPtrInterface::operator delete(void* object, std::size_t size) noexcept {
    if (PtrTrack::ptrifTrackOn_) [[unlikely]]
        PtrTrack::ptrifDel(object);
    detail::ObjectHeap::deallocate(object, size);
}

} // namespace Vel
