// Clock.h - the time stamps of messages, and the anchors that turn them into wall-clock time.
//
// A time stamp costs one instruction where the processor has a time stamp counter that runs at one
// speed in all states ("invariant"), else a call of clock_gettime, which the kernel answers without
// a system call on usual machines.
#pragma once

#include <Ferrolog/detail/Layout.h>

#include <ctime>

#if defined(__x86_64__) || defined(__i386__)
    #include <x86intrin.h>
#endif

namespace Ferrolog::detail {

// The best clock of this machine, or CLOCK_MONOTONIC if the environment asks for it:
// FERROLOG_CLOCK=monotonic.
ClockKind chooseClock();

inline U64 nanoseconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<U64>(time.tv_sec) * 1'000'000'000U + static_cast<U64>(time.tv_nsec);
}

inline U64 ticksNow(ClockKind kind) {
#if defined(__x86_64__) || defined(__i386__)
    if (kind == ClockKind::timeStampCounter) [[likely]]
        return __rdtsc();
#endif
    return nanoseconds(CLOCK_MONOTONIC);
}

// Reads the clocks as close together as it can.
Anchor takeAnchor(ClockKind kind);

// Waits a tenth of a millisecond after `first`, then takes an anchor: a pair that already gives the
// speed of the ticks, also if the process dies right away.
Anchor takeSecondAnchor(ClockKind kind, const Anchor& first);

// Ticks in a second as two anchors tell it, at least 1.
U64 ticksPerSecond(const Anchor& first, const Anchor& second);

} // namespace Ferrolog::detail
