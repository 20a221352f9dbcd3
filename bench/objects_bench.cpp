// objects_bench.cpp - counted objects and pointers beside boost::intrusive_ptr and std::shared_ptr.
//
// WHAT/WHO/CASE: Copy copies a pointer and drops the copy; Make creates an object of 48 bytes and
//                destroys it; MakeMany
// creates 1000 and then destroys them. CASE is the counting mode: plain, or atomic as
// enableThreadSafePointers has it. std::shared_ptr has no such switch: it counts plainly until the
// process starts its first thread, and atomically ever after. This process starts one before it
// measures, so shared_ptr is what an agent with threads gets, in both cases; shared_ptrPlain is the
// standard library's own type for counting without threads.
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <array>
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>
#if BRIXO_HAVE_BOOST
    #include <boost/smart_ptr/intrusive_ptr.hpp>
    #include <boost/smart_ptr/intrusive_ref_counter.hpp>
#endif

namespace {

struct Payload {
    std::array<std::uint32_t, 8> words{};
};

class Object final : public Vel::PtrInterface {
public:
    Payload payload;
};

class CountingMode {
public:
    explicit CountingMode(bool isAtomic) {
        Vel::VFPtrInterface::enableThreadSafePointers = isAtomic;
    }

    CountingMode(const CountingMode&) = delete;
    CountingMode& operator=(const CountingMode&) = delete;

    ~CountingMode() { Vel::VFPtrInterface::enableThreadSafePointers = false; }
};

template <class Pointer>
void copy(benchmark::State& state, const Pointer& source) {
    for (auto _ : state) {
        Pointer taken(source);
        benchmark::DoNotOptimize(taken);
    }
}

template <class Make>
void make(benchmark::State& state, Make makeOne) {
    for (auto _ : state) {
        auto made = makeOne();
        benchmark::DoNotOptimize(made);
    }
}

template <class Make>
void makeMany(benchmark::State& state, Make makeOne) {
    std::vector<decltype(makeOne())> made(1000);
    for (auto _ : state) {
        for (auto& pointer : made) pointer = makeOne();
        for (auto& pointer : made) pointer = nullptr;
    }
}

Vel::Ptr<Object> makeOurs() { return new Object; }

void copyOurs(benchmark::State& state, bool isAtomic) {
    const CountingMode mode(isAtomic);
    copy(state, Vel::Ptr<Object>(new Object));
}

void makeOursIn(benchmark::State& state, bool isAtomic) {
    const CountingMode mode(isAtomic);
    make(state, makeOurs);
}

void makeManyOursIn(benchmark::State& state, bool isAtomic) {
    const CountingMode mode(isAtomic);
    makeMany(state, makeOurs);
}

BENCHMARK_CAPTURE(copyOurs, plain, false)->Name("Copy/ours/plain");
BENCHMARK_CAPTURE(copyOurs, atomic, true)->Name("Copy/ours/atomic");
BENCHMARK_CAPTURE(makeOursIn, plain, false)->Name("Make/ours/plain");
BENCHMARK_CAPTURE(makeOursIn, atomic, true)->Name("Make/ours/atomic");
BENCHMARK_CAPTURE(makeManyOursIn, plain, false)->Name("MakeMany/ours/plain");
BENCHMARK_CAPTURE(makeManyOursIn, atomic, true)->Name("MakeMany/ours/atomic");

[[maybe_unused]] const bool threadWasStarted = [] {
    std::thread([] {}).join();
    return true;
}();

auto makeShared() { return std::make_shared<Payload>(); }

void copyShared(benchmark::State& state) { copy(state, makeShared()); }

void makeOneShared(benchmark::State& state) { make(state, makeShared); }

void makeManyShared(benchmark::State& state) { makeMany(state, makeShared); }

BENCHMARK(copyShared)->Name("Copy/shared_ptr/plain");
BENCHMARK(copyShared)->Name("Copy/shared_ptr/atomic");
BENCHMARK(makeOneShared)->Name("Make/shared_ptr/plain");
BENCHMARK(makeOneShared)->Name("Make/shared_ptr/atomic");
BENCHMARK(makeManyShared)->Name("MakeMany/shared_ptr/plain");
BENCHMARK(makeManyShared)->Name("MakeMany/shared_ptr/atomic");

#ifdef __GLIBCXX__
auto makePlainShared() { return std::__make_shared<Payload, __gnu_cxx::_S_single>(); }

void copyPlainShared(benchmark::State& state) { copy(state, makePlainShared()); }

void makeOnePlainShared(benchmark::State& state) { make(state, makePlainShared); }

void makeManyPlainShared(benchmark::State& state) { makeMany(state, makePlainShared); }

BENCHMARK(copyPlainShared)->Name("Copy/shared_ptrPlain/plain");
BENCHMARK(makeOnePlainShared)->Name("Make/shared_ptrPlain/plain");
BENCHMARK(makeManyPlainShared)->Name("MakeMany/shared_ptrPlain/plain");
#endif

#if BRIXO_HAVE_BOOST
template <class Counter>
class Counted : public boost::intrusive_ref_counter<Counted<Counter>, Counter> {
public:
    virtual ~Counted() = default;
    Payload payload;
};

template <class Counter>
void copyIntrusive(benchmark::State& state) {
    copy(state, boost::intrusive_ptr<Counted<Counter>>(new Counted<Counter>));
}

template <class Counter>
void makeIntrusive(benchmark::State& state) {
    make(state, [] { return boost::intrusive_ptr<Counted<Counter>>(new Counted<Counter>); });
}

BENCHMARK(copyIntrusive<boost::thread_unsafe_counter>)->Name("Copy/intrusive_ptr/plain");
BENCHMARK(copyIntrusive<boost::thread_safe_counter>)->Name("Copy/intrusive_ptr/atomic");
BENCHMARK(makeIntrusive<boost::thread_unsafe_counter>)->Name("Make/intrusive_ptr/plain");
BENCHMARK(makeIntrusive<boost::thread_safe_counter>)->Name("Make/intrusive_ptr/atomic");
#endif

} // namespace
