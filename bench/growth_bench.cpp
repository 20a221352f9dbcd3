// growth_bench.cpp - maps and tables from 1e3 to 1e7: what an operation costs as they grow, and the
// one that costs most.
//
// Grow/WHO/SIZE inserts SIZE random keys without reserve, GrownHit/WHO/SIZE finds them in random
// order; times are of one operation. SlowestInsert/WHO/SIZE is the insert of the whole growth that
// took longest, in microseconds of the thread's own time (the counter "us"), so that who else runs
// does not count. TableFill and SlowestWrite are the same of a table.
#include "keys.h"

#include <Brixo/CacheTable.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <random>
#include <string>
#include <system_error>
#include <unistd.h>
#include <unordered_map>
#include <vector>
#if BRIXO_HAVE_ABSL
    #include <absl/container/node_hash_map.h>
#endif

namespace {

using Vel::U32;

class Member final : public Vel::MapMember<U32, U32> {
public:
    using MapMember::MapMember;
};

class Ours {
public:
    explicit Ours(U32 /*size*/) {}

    void insert(U32 key) { map_.create(key, key); }

    bool has(U32 key) const { return map_.find(key) != nullptr; }

private:
    Vel::KeyedCollection<Member> map_;
};

template <class Map>
class Peer {
public:
    explicit Peer(U32 /*size*/) {}

    void insert(U32 key) { map_.emplace(key, key); }

    bool has(U32 key) const { return map_.find(key) != map_.end(); }

private:
    Map map_;
};

// A table in a region of its own, gone with it.
class Table {
public:
    explicit Table(U32 size) {
        if (::mkdtemp(folder_.data()) == nullptr) std::abort();
        ::setenv("PINBUF_DIR", (folder_ + "/regions").c_str(), 1);
        table_ = Brixo::cacheTableFactory(Brixo::AgentId(1), {}, size, 8);
    }

    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    ~Table() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    void insert(U32 key) { table_->entryIs(Brixo::DeviceOffset(key), data_.data()); }

    bool has(U32 key) const { return table_->entry(Brixo::DeviceOffset(key)) != nullptr; }

private:
    std::string folder_ = "/dev/shm/growth-bench-XXXXXX";
    std::array<unsigned char, 8> data_{1};
    Vel::Ptr<Brixo::CacheTable> table_;
};

std::int64_t threadNanoseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

template <class Map>
void grow(benchmark::State& state, U32 size) {
    for (auto _ : state) {
        state.PauseTiming();
        auto map = std::make_unique<Map>(size);
        state.ResumeTiming();
        for (U32 i = 0; i < size; ++i) map->insert(Bench::scattered(i));
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Map>
void grownHit(benchmark::State& state, U32 size) {
    Map map(size);
    std::vector<U32> keys(size);
    for (U32 i = 0; i < size; ++i) map.insert(keys[i] = Bench::scattered(i));
    std::mt19937 random(3);
    std::ranges::shuffle(keys, random);
    for (auto _ : state)
        for (const U32 key : keys) benchmark::DoNotOptimize(map.has(key));
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Map>
void slowestInsert(benchmark::State& state, U32 size) {
    std::int64_t slowest = 0;
    malloc_trim(0); // or the first larger request would pay for what another map has freed
    for (auto _ : state) {
        Map map(size);
        std::int64_t before = threadNanoseconds();
        for (U32 i = 0; i < size; ++i) {
            map.insert(Bench::scattered(i));
            const std::int64_t now = threadNanoseconds();
            slowest = std::max(slowest, now - before);
            before = now;
        }
    }
    state.counters["us"] = static_cast<double>(slowest) / 1000;
}

void add(const std::string& what, const std::string& who, U32 size,
         void (*run)(benchmark::State&, U32)) {
    auto* added =
        benchmark::RegisterBenchmark((what + "/" + who + "/" + std::to_string(size)).c_str(),
                                     [=](benchmark::State& state) { run(state, size); });
    if (size >= 1000000) added->Iterations(1);
    if (size >= 10000000) added->Repetitions(3);
}

template <class Map>
void addMap(const std::string& who, U32 size) {
    add("Grow", who, size, grow<Map>);
    add("GrownHit", who, size, grownHit<Map>);
    if (size == 1000000) add("SlowestInsert", who, size, slowestInsert<Map>);
}

[[maybe_unused]] const bool isAdded = [] {
    for (const U32 size : {1000U, 10000U, 100000U, 1000000U, 10000000U}) {
        addMap<Ours>("ours", size);
        addMap<Peer<std::unordered_map<U32, U32>>>("std", size);
#if BRIXO_HAVE_ABSL
        addMap<Peer<absl::node_hash_map<U32, U32>>>("absl", size);
#endif
        add("TableFill", "ours", size, grow<Table>);
        add("TableLookup", "ours", size, grownHit<Table>);
        if (size == 1000000) add("SlowestWrite", "ours", size, slowestInsert<Table>);
    }
    add("SlowestInsert", "ours", 10000000, slowestInsert<Ours>);
    add("SlowestWrite", "ours", 10000000, slowestInsert<Table>);
    return true;
}();

} // namespace
