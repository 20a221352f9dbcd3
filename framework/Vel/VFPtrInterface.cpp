#include <Vel/VFPtrInterface.h>

#include <Vel/detail/ObjectHeap.h>

namespace Vel {

constinit bool VFPtrInterface::enableThreadSafePointers = false;

void* VFPtrInterface::operator new(std::size_t size) {
    return detail::ObjectHeap::allocate(size);
}

void VFPtrInterface::operator delete(void* object, std::size_t size) noexcept {
    detail::ObjectHeap::deallocate(object, size);
}

} // namespace Vel
