// Writes a trace file that another program reads: ferrolog-sample FILE. Prints the texts of its
// messages, oldest first.
#include <Ferrolog/Trace.h>

#include <cstdio>
#include <thread>

int main(int argc, char** argv) {
    if (argc != 2 || ferrolog_open(argv[1], 16 << 10) != 0) {
        return 1;
    }
    FERROLOG("BrixoCacheTable", "CacheTable::"
                                "doRestart");
    std::puts("CacheTable::doRestart");
    for (unsigned i = 0; i < 20; ++i) {
        FERROLOG("BrixoCacheTable", "Recovered entry, index: ", i, " key: ", i * 4);
        std::printf("Recovered entry, index: %u key: %u\n", i, i * 4);
    }
    std::thread([] { FERROLOG("Sample", "100% of ", -1, " and ", ~std::uint64_t{0}); }).join();
    std::puts("100% of -1 and 18446744073709551615");
    FERROLOG("Sample", "at ", Ferrolog::hex(0xABCU), " and ", std::int64_t{-1} * (1 << 30) * 8);
    std::puts("at 0xabc and -8589934592");
    return 0;
}
