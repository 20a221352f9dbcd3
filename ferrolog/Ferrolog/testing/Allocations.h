// Allocations.h - counts what the whole process allocates, the libraries too. For one source file
// of a test: it defines malloc and its like. Sanitizers have their own, and tell us.
#pragma once

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace Ferrolog::testing {

inline constinit std::atomic<int> allocations = 0;

// How often `body` allocates.
template <class Body>
int allocationsOf(Body body) {
    const int before = allocations;
    body();
    return allocations - before;
}

} // namespace Ferrolog::testing

#if defined(__has_feature)
    #if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
        #define FERROLOG_TESTING_SANITIZED
    #endif
#endif

#ifdef FERROLOG_TESTING_SANITIZED
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*,
                                                                           std::size_t),
                                                         void (*freed)(const volatile void*));

namespace Ferrolog::testing {

inline const bool hooked =
    __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t) { ++allocations; }, [](const volatile void*) {}) != 0;

} // namespace Ferrolog::testing
#else
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
    ++Ferrolog::testing::allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    ++Ferrolog::testing::allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    ++Ferrolog::testing::allocations;
    return __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++Ferrolog::testing::allocations;
    return __libc_memalign(alignment, size);
}

} // extern "C"
#endif
