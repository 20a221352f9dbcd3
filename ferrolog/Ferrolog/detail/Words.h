// Words.h - how words of the shared mapping are read and written.
//
// Plain machine moves, spelled so that the compiler neither tears, drops nor reorders what a killed
// process leaves behind. On x86 stores reach memory in program order, so the file after a kill is
// always some prefix of them.
#pragma once

#include <Ferrolog/detail/Layout.h>

#include <atomic>

namespace Ferrolog::detail {

// The file keeps 64-bit words at multiples of 8, which the 32-bit ABI does not promise of the bare
// type: without the promise a compiler calls a library for them.
using AlignedU64 [[gnu::aligned(8)]] = U64;

inline U32 load(const U32& word) {
    return std::atomic_ref<U32>(const_cast<U32&>(word)).load(std::memory_order_acquire);
}

inline void store(U32& word, U32 value) {
    std::atomic_ref<U32>(word).store(value, std::memory_order_relaxed);
}

// Everything stored before is in place when this is.
inline void storeLast(U32& word, U32 value) {
    std::atomic_ref<U32>(word).store(value, std::memory_order_release);
}

inline void storeLast(U64& word, U64 value) {
    __atomic_store_n(static_cast<AlignedU64*>(&word), value, __ATOMIC_RELEASE);
}

inline bool replace(U32& word, U32 expected, U32 value) {
    return std::atomic_ref<U32>(word).compare_exchange_strong(expected, value);
}

// Adds to a word that one thread alone writes; the value before. One instruction without a lock
// prefix, so a signal handler of the same thread may do the same at any moment. The value comes as
// wide as an index, for the instruction clears the upper half anyway.
inline std::size_t addAsOnlyWriter(U32& word, std::size_t count) {
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("xaddl %k0, %1" : "+r"(count), "+m"(word) : : "memory", "cc");
    return count;
#else
    return std::atomic_ref<U32>(word).fetch_add(static_cast<U32>(count), std::memory_order_relaxed);
#endif
}

// The same for a 64-bit counter and 1; the low half of the value before.
inline U32 countAsOnlyWriter(U64& counter) {
#if defined(__x86_64__)
    U64 before = 1;
    __asm__ volatile("xaddq %0, %1" : "+r"(before), "+m"(counter) : : "memory", "cc");
    return static_cast<U32>(before);
#elif defined(__i386__)
    // Two instructions: a kill between them loses the carry, at one in 2^32 messages of a site.
    auto* half = reinterpret_cast<U32*>(&counter);
    U32 before = 1;
    __asm__ volatile("xaddl %0, %1\n\tadcl $0, %2"
                     : "+&r"(before), "+m"(half[0]), "+m"(half[1])
                     :
                     : "memory", "cc");
    return before;
#else
    return static_cast<U32>(std::atomic_ref<U64>(counter).fetch_add(1, std::memory_order_relaxed));
#endif
}

inline U32 addShared(U32& word, U32 count) { return std::atomic_ref<U32>(word).fetch_add(count); }

inline U64 addShared(U64& word, U64 count) {
    return __atomic_fetch_add(static_cast<AlignedU64*>(&word), count, __ATOMIC_SEQ_CST);
}

} // namespace Ferrolog::detail
