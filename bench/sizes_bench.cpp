// sizes_bench.cpp - bytes of memory for each member of a map and each slot of a table.
//
// MapMember/WHO/KEYS/SIZE and TableSlot/WHO/STATE/SIZE: what a child process grows by while it
// fills one, divided by SIZE; whole pages, so the sizes are large. A slot's key word and data in
// the region are not counted. The figure is the counter "bytes"; the times mean nothing. `hand` is
// cachetable_bench's table by hand.
#include "keys.h"

#include <Brixo/CacheTable.h>
#include <Brixo/DeviceOffset.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>
#if BRIXO_HAVE_ABSL
    #include <absl/container/node_hash_map.h>
#endif

namespace {

using Vel::U32;

// Bytes of memory that this process alone has written to.
double privateBytes() {
    std::ifstream file("/proc/self/smaps_rollup");
    for (std::string word; file >> word;)
        if (word == "Private_Dirty:") {
            double kibibytes = 0;
            file >> kibibytes;
            return kibibytes * 1024;
        }
    return 0;
}

// What `fill` makes a child process grow by. What it makes lives until the child's end.
template <class Fill>
double growth(Fill fill) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    if (::fork() == 0) {
        const double before = privateBytes();
        fill();
        const double bytes = privateBytes() - before;
        const bool isSent = ::write(ends[1], &bytes, sizeof bytes) == sizeof bytes;
        ::_exit(isSent ? 0 : 1);
    }
    ::close(ends[1]);
    double bytes = 0;
    const bool isRead = ::read(ends[0], &bytes, sizeof bytes) == sizeof bytes;
    ::close(ends[0]);
    int status = 0;
    ::wait(&status);
    if (!isRead || status != 0) std::abort();
    return bytes;
}

template <class Fill>
void measure(benchmark::State& state, Fill fill, U32 count) {
    double bytes = 0;
    for (auto _ : state) bytes = growth([&] { fill(count); });
    state.counters["bytes"] = bytes / count;
}

class Member final : public Vel::MapMember<U32, U32> {
public:
    using MapMember::MapMember;
};

void fillOurs(U32 count) {
    auto& map = *new Vel::KeyedCollection<Member>;
    for (U32 i = 0; i < count; ++i) map.create(Bench::scattered(i), i);
}

template <class Map>
void fillPeer(U32 count) {
    auto& map = *new Map;
    for (U32 i = 0; i < count; ++i) map.emplace(Bench::scattered(i), i);
}

// The maps of a cache table, as recovery leaves them.
void fillFullTable(U32 count) {
    auto& slots = *new Brixo::CacheTable::KeyToIndex;
    slots.reserve(count);
    for (U32 i = 0; i < count; ++i) slots.add(Brixo::DeviceOffset(Bench::scattered(i)), i);
}

void fillEmptyTable(U32 count) {
    auto& slots = *new Brixo::CacheTable::FreeIndex;
    slots.reserve(count);
    for (U32 i = 0; i < count; ++i) slots.add(i, true);
}

void fillEmptyHandTable(U32 count) {
    auto& slots = *new std::vector<U32>;
    slots.reserve(count);
    for (U32 i = 0; i < count; ++i) slots.push_back(i);
}

void fillFullHandTable(U32 count) {
    fillPeer<std::unordered_map<U32, U32>>(count);
    (new std::vector<U32>)->reserve(count);
}

void add(const std::string& name, void (*fill)(U32), U32 count) {
    benchmark::RegisterBenchmark((name + "/" + std::to_string(count)).c_str(),
                                 [=](benchmark::State& state) { measure(state, fill, count); })
        ->Iterations(1)
        ->Repetitions(3);
}

[[maybe_unused]] const bool isAdded = [] {
    for (const U32 count : {10000U, 100000U, 1000000U}) {
        add("MapMember/ours/u32", fillOurs, count);
        add("MapMember/std/u32", fillPeer<std::unordered_map<U32, U32>>, count);
#if BRIXO_HAVE_ABSL
        add("MapMember/absl/u32", fillPeer<absl::node_hash_map<U32, U32>>, count);
#endif
        add("TableSlot/ours/full", fillFullTable, count);
        add("TableSlot/hand/full", fillFullHandTable, count);
        add("TableSlot/ours/empty", fillEmptyTable, count);
        add("TableSlot/hand/empty", fillEmptyHandTable, count);
    }
    add("MapMember/ours/u32", fillOurs, 10000000);
    add("TableSlot/ours/full", fillFullTable, 10000000);
    return true;
}();

} // namespace
