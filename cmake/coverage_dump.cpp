// coverage_dump.cpp - part of every library of the coverage build, and of no other: keeps the line
// counts of a process that aborts, so that an assertion that a test provokes counts as run.
//
// Each library has counters of its own, hence a handler of its own; each calls the one that was
// there before it.
#include <csignal>

extern "C" void __gcov_dump();

namespace {

struct sigaction previous;

void dumpThenGoOn(int signal) {
    __gcov_dump();
    sigaction(signal, &previous, nullptr);
    std::raise(signal);
}

[[gnu::constructor]] void install() {
    struct sigaction action = {};
    action.sa_handler = dumpThenGoOn;
    action.sa_flags = SA_NODEFER; // the one before is called from within
    sigaction(SIGABRT, &action, &previous);
}

} // namespace
