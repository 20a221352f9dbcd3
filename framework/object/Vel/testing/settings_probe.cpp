// settings_probe.cpp - a program that says what the environment has set in it, for the test of who
// may set something.
#include <Vel/IntrospectionReactor.h>
#include <Vel/TraceHandle.h>
#include <Vel/detail/ObjectHeap.h>
#include <cstdio>
#include <sys/auxv.h>

int main() {
    const Vel::TraceHandle handle("Widget", false);
    Vel::detail::ObjectHeap::deallocate(Vel::detail::ObjectHeap::allocate(8), 8);
    std::printf("levels %u, heap %s, introspection %s, %s\n", unsigned{handle.levelsOn()},
                Vel::detail::ObjectHeap::reservedBytes() != 0 ? "on" : "off",
                Vel::IntrospectionReactor::global()->active() ? "on" : "off",
                ::getauxval(AT_SECURE) != 0 ? "secure" : "plain");
    return std::fflush(stdout);
}
