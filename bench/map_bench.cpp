// map_bench.cpp - the map and its nodes beside std::unordered_map and absl::node_hash_map.
//
// WHAT/WHO/KEYS/SIZE: Insert makes every node in an empty map without reserve; Hit and Miss look
//                     keys up in random order;
// EraseInsert replaces a random member; Iterate walks all; Teardown drops a full map; DrainFirst
// takes the first member until none is left (std and absl: erase(begin())). Times are of one
// operation. The peers run on random and sequential keys; ours on every family, which must cost
// about what random keys cost.
#include "keys.h"

#include <Vel/HashMap.h>
#include <Vel/MapMember.h>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>
#if BRIXO_HAVE_ABSL
    #include <absl/container/node_hash_map.h>
#endif

namespace {

using Vel::U32;
using Vel::U64;

template <class K>
class Node final : public Vel::MapMember<K, U32> {
public:
    using Vel::MapMember<K, U32>::MapMember;
};

template <class K>
class Ours {
public:
    static constexpr const char* name = "ours";
    static constexpr bool canDrain = true;

    void insert(K key) { map_.insert(*new Node<K>(key, 1)); }

    U32 find(K key) const {
        const Node<K>* node = map_.find(key);
        return node != nullptr ? node->value() : 0;
    }

    void erase(K key) { map_.take(key); }

    U64 sum() const {
        U64 sum = 0;
        for (auto it = map_.begin(); it; it.advance()) sum += it->value();
        return sum;
    }

    void eraseFirst() { map_.remove(*map_.first()); }

private:
    Vel::HashMap<Node<K>, K, U32> map_;
};

template <class Map, class K>
class Peer {
public:
    void insert(K key) { map_.emplace(key, 1U); }

    U32 find(K key) const {
        const auto it = map_.find(key);
        return it != map_.end() ? it->second : 0;
    }

    void erase(K key) { map_.erase(key); }

    U64 sum() const {
        U64 sum = 0;
        for (const auto& [key, value] : map_) sum += value;
        return sum;
    }

    void eraseFirst() { map_.erase(map_.begin()); }

private:
    Map map_;
};

template <class K>
class Std : public Peer<std::unordered_map<K, U32>, K> {
public:
    static constexpr const char* name = "std";
    static constexpr bool canDrain = true;
};

#if BRIXO_HAVE_ABSL
template <class K>
class Absl : public Peer<absl::node_hash_map<K, U32>, K> {
public:
    static constexpr const char* name = "absl";
    static constexpr bool canDrain = false; // begin() walks all that was emptied: quadratic
};
#endif

enum class Keys { random, sequential, stride4, stride64, stride4096, interleaved, equalHashes };

constexpr std::pair<Keys, const char*> keyNames[] = {
    {Keys::random, "random"},          {Keys::sequential, "sequential"},
    {Keys::stride4, "stride4"},        {Keys::stride64, "stride64"},
    {Keys::stride4096, "stride4096"},  {Keys::interleaved, "interleaved"},
    {Keys::equalHashes, "equalHashes"}};

// `2 * count` distinct keys; the second half is for misses.
template <class K>
std::vector<K> makeKeys(Keys kind, std::size_t count) {
    std::vector<K> keys(2 * count);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto n = static_cast<U32>(i);
        switch (kind) {
        case Keys::random: keys[i] = Bench::scattered(n); break;
        case Keys::sequential: keys[i] = n; break;
        case Keys::stride4: keys[i] = static_cast<K>(n) * 4; break;
        case Keys::stride64: keys[i] = static_cast<K>(n) * 64; break;
        case Keys::stride4096:
            keys[i] = static_cast<K>(n) * 4096 + (n >> 20);
            break; // distinct in 32 bits
        case Keys::interleaved:
            keys[i] = static_cast<K>(n / 2) * 4096 + (n % 2 != 0 ? 65 : 0);
            break;
        case Keys::equalHashes: keys[i] = static_cast<K>(U64{n} << 32 | (n ^ 5)); break;
        }
    }
    if (kind == Keys::random) {
        std::mt19937 random(7);
        std::ranges::shuffle(keys, random);
    }
    return keys;
}

template <class Map, class K>
std::unique_ptr<Map> filled(const std::vector<K>& keys, std::size_t count) {
    auto map = std::make_unique<Map>();
    for (std::size_t i = 0; i < count; ++i) map->insert(keys[i]);
    return map;
}

template <class Map, class K>
void insert(benchmark::State& state, Keys kind, std::size_t count) {
    const auto keys = makeKeys<K>(kind, count);
    for (auto _ : state) {
        auto map = filled<Map>(keys, count);
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
}

template <class Map, class K>
void teardown(benchmark::State& state, Keys kind, std::size_t count) {
    const auto keys = makeKeys<K>(kind, count);
    for (auto _ : state) {
        state.PauseTiming();
        auto map = filled<Map>(keys, count);
        state.ResumeTiming();
        map.reset();
    }
}

template <class Map, class K>
void drainFirst(benchmark::State& state, Keys kind, std::size_t count) {
    const auto keys = makeKeys<K>(kind, count);
    for (auto _ : state) {
        state.PauseTiming();
        auto map = filled<Map>(keys, count);
        state.ResumeTiming();
        for (std::size_t i = 0; i < count; ++i) map->eraseFirst();
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
}

template <class Map, class K>
void find(benchmark::State& state, Keys kind, std::size_t count, bool hit) {
    auto keys = makeKeys<K>(kind, count);
    const auto map = filled<Map>(keys, count);
    const auto from = keys.begin() + static_cast<std::ptrdiff_t>(hit ? 0 : count);
    std::vector<K> asked(from, from + static_cast<std::ptrdiff_t>(count));
    std::mt19937 random(3);
    std::ranges::shuffle(asked, random);
    for (auto _ : state) {
        U32 sum = 0;
        for (const K key : asked) sum += map->find(key);
        benchmark::DoNotOptimize(sum);
    }
}

template <class Map, class K>
void eraseInsert(benchmark::State& state, Keys kind, std::size_t count) {
    auto keys = makeKeys<K>(kind, count);
    const auto map = filled<Map>(keys, count);
    std::mt19937 random(5);
    std::shuffle(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(count), random);
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i) {
            map->erase(keys[i]);
            std::swap(keys[i], keys[count + i]);
            map->insert(keys[i]);
        }
    }
}

template <class Map, class K>
void iterate(benchmark::State& state, Keys kind, std::size_t count) {
    const auto keys = makeKeys<K>(kind, count);
    const auto map = filled<Map>(keys, count);
    for (auto _ : state) benchmark::DoNotOptimize(map->sum());
}

template <class Map, class K>
void addMap(const char* width) {
    for (const std::size_t count : {1000U, 100000U, 1000000U}) {
        for (const auto& [kind, kindName] : keyNames) {
            const bool isForAll = kind == Keys::random || kind == Keys::sequential;
            const bool isWide = sizeof(K) == 8;
            if (kind == Keys::equalHashes ? !isWide : isWide && !isForAll) continue;
            if (Map::name != Ours<K>::name && !isForAll && kind != Keys::equalHashes) continue;
            const std::string tail = std::string("/") + Map::name + "/" + width + "/" + kindName +
                                     "/" + std::to_string(count);
            const auto add = [&](const char* what, auto run) {
                const auto counted = [run, count](benchmark::State& state) {
                    run(state);
                    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
                };
                benchmark::RegisterBenchmark((what + tail).c_str(), counted)
                    ->Unit(benchmark::kMicrosecond);
            };
            const Keys k = kind;
            add("Insert", [=](benchmark::State& s) { insert<Map, K>(s, k, count); });
            add("Hit", [=](benchmark::State& s) { find<Map, K>(s, k, count, true); });
            add("Miss", [=](benchmark::State& s) { find<Map, K>(s, k, count, false); });
            add("EraseInsert", [=](benchmark::State& s) { eraseInsert<Map, K>(s, k, count); });
            add("Iterate", [=](benchmark::State& s) { iterate<Map, K>(s, k, count); });
            add("Teardown", [=](benchmark::State& s) { teardown<Map, K>(s, k, count); });
            if (Map::canDrain || count < 100000)
                add("DrainFirst", [=](benchmark::State& s) { drainFirst<Map, K>(s, k, count); });
        }
    }
}

template <class K>
bool addAll(const char* width) {
    addMap<Ours<K>, K>(width);
    addMap<Std<K>, K>(width);
#if BRIXO_HAVE_ABSL
    addMap<Absl<K>, K>(width);
#endif
    return true;
}

[[maybe_unused]] const bool added = addAll<U32>("u32") && addAll<U64>("u64");

} // namespace
