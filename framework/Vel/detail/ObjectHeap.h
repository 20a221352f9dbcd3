// ObjectHeap.h - memory of counted objects, by exact size.
#pragma once

#include <cstddef>
#include <new>

namespace Vel::detail {

class ObjectHeap {
public:
    static void* allocate(std::size_t size) { return ::operator new(size); }

    static void deallocate(void* object, std::size_t) noexcept { ::operator delete(object); }
};

} // namespace Vel::detail
