// ScarceMemory.h - the general allocator of the whole process, the libraries' too, which refuses
// what a test tells it to. For one source file of a test: it defines the global operators. Not
// installed.
//
// Threads: one.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace Vel::Testing {

constexpr int always = -1;
// How many allocations are granted before the next one is refused.
inline constinit int allocationsLeft = always;

inline bool isRefused() noexcept {
    if (allocationsLeft == always) return false;
    if (allocationsLeft == 0) return true;
    --allocationsLeft;
    return false;
}

inline void* allocated(std::size_t size, std::size_t alignment) noexcept {
    if (isRefused()) return nullptr;
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

inline void* allocatedOrThrown(std::size_t size, std::size_t alignment) {
    void* const memory = allocated(size, alignment);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

} // namespace Vel::Testing

void* operator new(std::size_t size) {
    return Vel::Testing::allocatedOrThrown(size, alignof(std::max_align_t));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return Vel::Testing::allocatedOrThrown(size, static_cast<std::size_t>(alignment));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Vel::Testing::allocated(size, alignof(std::max_align_t));
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Vel::Testing::allocated(size, static_cast<std::size_t>(alignment));
}

// Arrays too: under a sanitizer they have operators of their own.
void* operator new[](std::size_t size) { return ::operator new(size); }

void* operator new[](std::size_t size, const std::nothrow_t& none) noexcept {
    return ::operator new(size, none);
}

void operator delete[](void* memory) noexcept { std::free(memory); }

void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
