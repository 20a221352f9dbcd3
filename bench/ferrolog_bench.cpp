// ferrolog_bench.cpp - a trace message beside the least that any time-stamped record must cost, and
// beside other tracers.
//
// On/WHO/ARGUMENTS: a message that is recorded. `store` stores a time stamp and eight words in all;
//                   LTTng records the same
// two integers in flight-recorder mode (overwritten ring, no reader), if scripts/bench has made a
// session for it. Off/WHO/ARGUMENTS: a message that nobody wants, beside spdlog's test of its level
// and an inlined test of one word; the empty loop is in all three.
#include <Ferrolog/Trace.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>
#if BRIXO_HAVE_LTTNG
    #include "lttng_calls.h"
#endif
#if BRIXO_HAVE_SPDLOG
    #include <spdlog/sinks/null_sink.h>
    #include <spdlog/spdlog.h>
#endif

#if defined(__x86_64__) || defined(__i386__)
    #include <x86intrin.h>
#else
    #include <ctime>
#endif

namespace {

std::uint64_t timeStamp() {
#if defined(__x86_64__) || defined(__i386__)
    return __rdtsc();
#else
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(time.tv_nsec);
#endif
}

// Opens a trace file of its own for one benchmark and removes it again.
class OpenTrace {
public:
    OpenTrace() {
        std::array<char, 32> name{"/dev/shm/ferrolog_bench.XXXXXX"};
        const int descriptor = ::mkstemp(name.data());
        if (descriptor >= 0) ::close(descriptor);
        path_ = name.data();
        isOpen_ = ferrolog_open(path_.c_str(), 1U << 20) == 0;
    }

    OpenTrace(const OpenTrace&) = delete;
    OpenTrace& operator=(const OpenTrace&) = delete;

    ~OpenTrace() {
        ferrolog_close();
        ::unlink(path_.c_str());
    }

    bool isOpen() const { return isOpen_; }

private:
    std::string path_;
    bool isOpen_ = false;
};

// The peer: eight words and a time stamp, stored one record after another into a ring of one
//           mebibyte.
void storeEightWordsAndTimeStamp(benchmark::State& state) {
    static std::array<std::uint32_t, 1U << 18> ring{};
    std::uint32_t at = 0;
    std::uint32_t index = 0;
    for (auto _ : state) {
        volatile std::uint32_t* const to = &ring[at & (ring.size() - 1)];
        const std::uint64_t now = timeStamp();
        to[0] = static_cast<std::uint32_t>(now);
        to[1] = static_cast<std::uint32_t>(now >> 32);
        to[2] = index;
        to[3] = ~index;
        to[4] = 1;
        to[5] = 2;
        to[6] = 3;
        to[7] = 4;
        at += 8;
        ++index;
    }
}

void traceTwoIntegers(benchmark::State& state) {
    const OpenTrace trace;
    if (!trace.isOpen()) state.SkipWithError(ferrolog_error());
    std::uint32_t index = 0;
    for (auto _ : state) {
        FERROLOG("Bench", "Recovered entry, index: ", index, " key: ", ~index);
        ++index;
    }
}

void traceWithoutArguments(benchmark::State& state) {
    const OpenTrace trace;
    if (!trace.isOpen()) state.SkipWithError(ferrolog_error());
    for (auto _ : state) FERROLOG("Bench", "CacheTable::doRestart");
}

void traceWhileOff(benchmark::State& state) {
    ferrolog_close();
    std::uint32_t index = 0;
    for (auto _ : state) {
        FERROLOG("Bench", "Recovered entry, index: ", index, " key: ", ~index);
        benchmark::DoNotOptimize(++index);
    }
}

// The peer of a call site that is off: a level in memory, tested inline.
void testLevelInline(benchmark::State& state) {
    static std::uint32_t level = 0;
    std::uint32_t index = 0;
    for (auto _ : state) {
        if (__atomic_load_n(&level, __ATOMIC_RELAXED) != 0) benchmark::DoNotOptimize(index * 2);
        benchmark::DoNotOptimize(++index);
    }
}

void emptyLoop(benchmark::State& state) {
    std::uint32_t index = 0;
    for (auto _ : state) benchmark::DoNotOptimize(++index);
}

BENCHMARK(storeEightWordsAndTimeStamp)->Name("On/store/2");
BENCHMARK(traceTwoIntegers)->Name("On/ours/2");
BENCHMARK(storeEightWordsAndTimeStamp)->Name("On/store/0");
BENCHMARK(traceWithoutArguments)->Name("On/ours/0");
BENCHMARK(traceWhileOff)->Name("Off/ours/2");
BENCHMARK(testLevelInline)->Name("Off/inlineTest/2");
BENCHMARK(emptyLoop)->Name("Off/emptyLoop/2");

#if BRIXO_HAVE_SPDLOG
void spdlogWhileOff(benchmark::State& state) {
    const auto logger =
        std::make_shared<spdlog::logger>("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
    logger->set_level(spdlog::level::info);
    std::uint32_t index = 0;
    for (auto _ : state) {
        logger->debug("Recovered entry, index: {} key: {}", index, ~index);
        benchmark::DoNotOptimize(++index);
    }
}

BENCHMARK(spdlogWhileOff)->Name("Off/spdlog/2");
#endif

#if BRIXO_HAVE_LTTNG
void lttngTwoIntegers(benchmark::State& state) {
    if (!lttngIsRecording()) state.SkipWithError("no session records the tracepoint");
    std::uint32_t index = 0;
    for (auto _ : state) {
        lttngTrace(index, ~index);
        ++index;
    }
}

BENCHMARK(lttngTwoIntegers)->Name("On/lttng/2");
#endif

} // namespace
