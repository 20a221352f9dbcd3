#include <Vel/VFPtrInterface.h>

#include <Vel/PtrTrack.h>
#include <Vel/detail/ObjectHeap.h>
#include <new>

// A sanitizer watches each object if it comes from the general allocator.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    #define VEL_OBJECTS_ARE_WATCHED 1
#elif defined(__has_feature)
    #if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||                     \
        __has_feature(memory_sanitizer)
        #define VEL_OBJECTS_ARE_WATCHED 1
    #endif
#endif

namespace Vel {

namespace {

#ifdef VEL_OBJECTS_ARE_WATCHED
void* allocate(std::size_t size) { return ::operator new(size); }

void deallocate(void* object, std::size_t) noexcept { ::operator delete(object); }
#else
void* allocate(std::size_t size) { return detail::ObjectHeap::allocate(size); }

void deallocate(void* object, std::size_t size) noexcept {
    detail::ObjectHeap::deallocate(object, size);
}
#endif

} // namespace

constinit bool VFPtrInterface::enableThreadSafePointers = false;

void* VFPtrInterface::operator new(std::size_t size) {
    void* object = allocate(size);
    if (PtrTrack::ptrifTrackOn_) [[unlikely]]
        PtrTrack::ptrifNew(object);
    return object;
}

void VFPtrInterface::operator delete(void* object, std::size_t size) noexcept {
    if (PtrTrack::ptrifTrackOn_) [[unlikely]]
        PtrTrack::ptrifDel(object);
    deallocate(object, size);
}

} // namespace Vel
