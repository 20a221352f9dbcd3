// loading_bench.cpp - how long a process waits for the types' library, with and without its
// registration.
//
// Load/ours/(off|on) loads it in a process that has the framework alone, with the registrar
// inactive and active; Register/ours is the same process's registration of every type after that.
// Counter us: the median of the loads.
#include <Vel/IntrospectionReactor.h>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// What `work` takes in a process of its own, in microseconds; it gives the begin of what counts.
template <class Work>
double inChild(Work work) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    const pid_t child = fork();
    if (child == 0) {
        const Clock::time_point begin = work();
        const double us = std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
        _exit(write(ends[1], &us, sizeof us) == sizeof us ? 0 : 1);
    }
    double us = 0;
    if (read(ends[0], &us, sizeof us) != sizeof us) std::abort();
    close(ends[0]);
    close(ends[1]);
    waitpid(child, nullptr, 0);
    return us;
}

void* load(bool active) {
    Vel::IntrospectionReactor::global()->activeIs(active);
    void* const library = dlopen(BRIXO_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) std::abort();
    return library;
}

void callEach(void* library) {
    for (const char* routine : {"velInitBrixoTypes", "velInitU64Bitmask", "velInitBrixoCacheTable"})
        reinterpret_cast<void (*)()>(dlsym(library, routine))();
}

template <class Work>
void measure(benchmark::State& state, Work work) {
    std::vector<double> all;
    for (auto _ : state) all.push_back(inChild(work));
    std::ranges::nth_element(all, all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2));
    state.counters["us"] = all[all.size() / 2];
}

template <bool active>
void loading(benchmark::State& state) {
    measure(state, [] {
        const Clock::time_point begin = Clock::now();
        load(active);
        return begin;
    });
}

void registering(benchmark::State& state) {
    measure(state, [] {
        void* const library = load(false);
        Vel::IntrospectionReactor::global()->activeIs(true);
        const Clock::time_point begin = Clock::now();
        callEach(library);
        return begin;
    });
}

BENCHMARK(loading<false>)->Name("Load/ours/off");
BENCHMARK(loading<true>)->Name("Load/ours/on");
BENCHMARK(registering)->Name("Register/ours");

} // namespace
