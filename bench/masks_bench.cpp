// masks_bench.cpp - hashes of structured ids, passes over 64-bit masks, and masks of data, beside
// what one writes by hand.
//
// Hash/WHO/TYPE hashes 64 values in turn, the peer byte by byte through one loop. Pass/WHO/BITS
// walks 64 masks with BITS random members each, the peer by counting trailing zeros; times are of
// one member. FillBuffer/WHO/CASE writes the 256 bytes of a data mask to a buffer, `full` with an
// entry for every byte and `sparse` for every 16th, the peer from a std::unordered_map; SetBits/WHO
// sets 2048 bits of an empty mask one by one.
#include "values.h"

#include <Brixo/RequesterDataMask.h>
#include <Orn/U64BitmaskIter.h>
#include <benchmark/benchmark.h>
#include <bit>
#include <unordered_map>

namespace {

using Brixo::RequesterDataMask;
using Vel::U16;
using Vel::U32;
using Vel::U64;
using Vel::U8;

void hashOurs(benchmark::State& state) {
    const auto values = Bench::values<Brixo::LogicalResourceId>();
    for (auto _ : state)
        for (const auto& value : values) benchmark::DoNotOptimize(value.hash());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

// The same hash, as one would write it: the fields' bytes one after another, then the avalanche.
U32 hashOfBytes(const U8* bytes, std::size_t count) {
    U32 hash = 0;
    for (std::size_t i = 0; i < count; ++i) {
        hash += bytes[i];
        hash += hash << 10;
        hash ^= hash >> 6;
    }
    hash += hash << 3;
    hash ^= hash >> 11;
    hash += hash << 15;
    return hash;
}

void hashByteLoop(benchmark::State& state) {
    const auto values = Bench::values<Brixo::LogicalResourceId>();
    for (auto _ : state)
        for (const auto& value : values) {
            std::array<U8, 12> bytes{};
            const auto type = static_cast<U32>(value.type());
            const U64 id = value.id();
            std::memcpy(bytes.data(), &type, 4);
            std::memcpy(bytes.data() + 4, &id, 8);
            std::size_t count = bytes.size();
            benchmark::DoNotOptimize(count); // one loop for keys of any length
            const U32 hash = hashOfBytes(bytes.data(), count);
            if (hash != value.hash()) [[unlikely]]
                state.SkipWithError("not the same hash");
            benchmark::DoNotOptimize(hash);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

std::vector<U64> masks(unsigned bits) {
    std::mt19937_64 random(bits);
    std::vector<U64> all(Bench::valueCount);
    for (U64& mask : all)
        while (static_cast<unsigned>(std::popcount(mask)) < bits) mask |= U64{1} << (random() & 63);
    return all;
}

template <class Sum>
void pass(benchmark::State& state, Sum sumOfMembers) {
    const auto bits = static_cast<unsigned>(state.range(0));
    const auto all = masks(bits);
    for (auto _ : state)
        for (const U64 mask : all) benchmark::DoNotOptimize(sumOfMembers(mask));
    state.SetItemsProcessed(state.iterations() * bits * static_cast<std::int64_t>(all.size()));
}

void passOurs(benchmark::State& state) {
    pass(state, [](U64 mask) {
        unsigned sum = 0;
        for (Orn::U64BitmaskIter it{Orn::U64Bitmask(mask)}; it; ++it) sum += it.key().value();
        return sum;
    });
}

void passTrailingZeros(benchmark::State& state) {
    pass(state, [](U64 mask) {
        unsigned sum = 0;
        for (; mask != 0; mask &= mask - 1) sum += static_cast<unsigned>(std::countr_zero(mask));
        return sum;
    });
}

BENCHMARK(hashOurs)->Name("Hash/ours/LogicalResourceId");
BENCHMARK(hashByteLoop)->Name("Hash/byteLoop/LogicalResourceId");
BENCHMARK(passOurs)->Name("Pass/ours")->Arg(1)->Arg(8)->Arg(32)->Arg(64);
BENCHMARK(passTrailingZeros)->Name("Pass/countZeros")->Arg(1)->Arg(8)->Arg(32)->Arg(64);

constexpr U16 maskBytes = 256;

void fillBufferOurs(benchmark::State& state, U16 step) {
    RequesterDataMask mask(true);
    for (unsigned i = 0; i < maskBytes; i += step) mask.maskIs(static_cast<U16>(i), 0xa5);
    std::array<U8, maskBytes> buffer{};
    for (auto _ : state) {
        mask.fillMaskToBuf(buffer.data(), maskBytes);
        benchmark::DoNotOptimize(buffer);
    }
}

void fillBufferStd(benchmark::State& state, U16 step) {
    std::unordered_map<U16, U8> mask;
    for (unsigned i = 0; i < maskBytes; i += step) mask[static_cast<U16>(i)] = 0xa5;
    std::array<U8, maskBytes> buffer{};
    for (auto _ : state) {
        for (U16 i = 0; i < maskBytes; ++i) {
            const auto found = mask.find(i);
            buffer[i] = found != mask.end() ? found->second : U8{0};
        }
        benchmark::DoNotOptimize(buffer);
    }
}

void setBitsOurs(benchmark::State& state) {
    for (auto _ : state) {
        RequesterDataMask mask(true);
        mask.setBitRange(0, maskBytes * 8 - 1);
        benchmark::DoNotOptimize(mask);
    }
}

void setBitsStd(benchmark::State& state) {
    for (auto _ : state) {
        std::unordered_map<U16, U8> mask;
        for (U32 bit = 0; bit < maskBytes * 8U; ++bit) {
            U8& byte = mask[static_cast<U16>(bit >> 3)];
            byte = static_cast<U8>(byte | 1U << (bit & 7));
        }
        benchmark::DoNotOptimize(mask);
    }
}

BENCHMARK_CAPTURE(fillBufferOurs, full, 1)->Name("FillBuffer/ours/full");
BENCHMARK_CAPTURE(fillBufferOurs, sparse, 16)->Name("FillBuffer/ours/sparse");
BENCHMARK_CAPTURE(fillBufferStd, full, 1)->Name("FillBuffer/std/full");
BENCHMARK_CAPTURE(fillBufferStd, sparse, 16)->Name("FillBuffer/std/sparse");
BENCHMARK(setBitsOurs)->Name("SetBits/ours/2048");
BENCHMARK(setBitsStd)->Name("SetBits/std/2048");

} // namespace
