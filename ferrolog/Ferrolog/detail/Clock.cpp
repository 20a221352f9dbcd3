#include <Ferrolog/detail/Clock.h>

#include <cstdlib>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
    #include <cpuid.h>
#endif

namespace Ferrolog::detail {

namespace {

bool hasInvariantCounter() {
#if defined(__x86_64__) || defined(__i386__)
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    constexpr unsigned advancedPowerManagement = 0x80000007;
    return __get_cpuid(advancedPowerManagement, &a, &b, &c, &d) != 0 && (d >> 8 & 1) != 0;
#else
    return false;
#endif
}

} // namespace

ClockKind chooseClock() {
    const char* wish = ::secure_getenv("FERROLOG_CLOCK");
    const bool avoidCounter = wish != nullptr && std::strcmp(wish, "monotonic") == 0;
    return hasInvariantCounter() && !avoidCounter ? ClockKind::timeStampCounter
                                                  : ClockKind::monotonicNs;
}

Anchor takeAnchor(ClockKind kind) {
    // A preemption between two readings would set them apart: the tightest of three tries wins.
    Anchor best{};
    U64 bestSpan = ~U64{0};
    for (int attempt = 0; attempt < 3; ++attempt) {
        const U64 before = ticksNow(kind);
        const U64 monotonic = nanoseconds(CLOCK_MONOTONIC);
        const U64 realtime = nanoseconds(CLOCK_REALTIME);
        const U64 span = ticksNow(kind) - before;
        if (span < bestSpan) {
            bestSpan = span;
            best = {before + span / 2, monotonic, realtime};
        }
    }
    return best;
}

Anchor takeSecondAnchor(ClockKind kind, const Anchor& first) {
    constexpr int most = 100'000; // where the clock stands still, nobody waits for it
    Anchor second = takeAnchor(kind);
    for (int i = 0; i < most && second.monotonicNs - first.monotonicNs < 100'000; ++i)
        second = takeAnchor(kind);
    return second;
}

U64 ticksPerSecond(const Anchor& first, const Anchor& second) {
    const U64 ticks = second.ticks - first.ticks;
    const U64 span = second.monotonicNs - first.monotonicNs;
    if (ticks == 0 || span == 0) return 1'000'000'000U;
    const double rate = static_cast<double>(ticks) * 1e9 / static_cast<double>(span);
    return rate < 1.0 ? 1 : rate > 1e12 ? U64{1'000'000'000'000U} : static_cast<U64>(rate);
}

} // namespace Ferrolog::detail
