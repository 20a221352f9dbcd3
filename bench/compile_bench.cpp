// compile_bench.cpp - how long the compiler takes over a file that includes one header of ours,
// beside one that includes <string> and <ostream>.
//
// Compile/(ours|standard)/HEADER, with the compiler and the flags of this build. Counter us: the
// median of the CPU time.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Words = std::vector<std::string>;

double microseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
}

// CPU time of a program that ends well; minus 1 of one that does not.
double cpuTimeOf(const Words& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
        return -1;
    int status = 0;
    rusage used{};
    if (wait4(child, &status, 0, &used) != child || status != 0) return -1;
    return microseconds(used.ru_utime) + microseconds(used.ru_stime);
}

Words compiling(const Words& headers) {
    Words words;
    std::istringstream all(BRIXO_COMPILE);
    for (std::string word; std::getline(all, word, '\x1f');)
        if (!word.empty()) words.push_back(word);
    for (const std::string& header : headers) words.insert(words.end(), {"-include", header});
    words.insert(words.end(), {"-x", "c++", "-c", "/dev/null", "-o", "/dev/null"});
    return words;
}

void compile(benchmark::State& state, const Words& headers) {
    const Words words = compiling(headers);
    std::vector<double> all;
    for (auto _ : state) {
        all.push_back(cpuTimeOf(words));
        if (all.back() < 0) return state.SkipWithError("does not compile");
    }
    std::ranges::nth_element(all, all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2));
    state.counters["us"] = all[all.size() / 2];
}

[[maybe_unused]] const bool areRegistered = [] {
    for (const std::string header : {"DeviceId", "CacheTable", "Brixo"}) {
        const auto add = [&](const std::string& who, const Words& headers) {
            benchmark::RegisterBenchmark(
                ("Compile/" + who + "/" + header).c_str(),
                [headers](benchmark::State& state) { compile(state, headers); })
                ->Iterations(1);
        };
        add("ours", {"Brixo/" + header + ".h"});
        add("standard", {"string", "ostream"});
    }
    return true;
}();

} // namespace
