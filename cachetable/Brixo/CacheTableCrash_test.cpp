// A writer that stops after its n-th store into the region, for every n, and what is recovered
// then.
//
// The region is mapped read-only: each store faults, is counted, and is let through alone, one
// machine instruction long.
#include <Brixo/testing/KilledWriter.h>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pinbuf/pinbuf.h>
#include <sys/mman.h>
#include <ucontext.h>

namespace {

constexpr int stopped = 42;
constexpr greg_t trapFlag = 0x100;

bool isCounting = false;   // set in the writer alone
bool isUnmappable = false; // makes pinbuf_map fail
unsigned storesLeft = 0;
unsigned char* guarded = nullptr;
constexpr std::size_t guardedBytes = 4096;

void onStore(int, siginfo_t* info, void* context) {
    const auto* address = static_cast<unsigned char*>(info->si_addr);
    if (guarded == nullptr || address < guarded || address >= guarded + guardedBytes) ::abort();
    if (storesLeft-- == 0) ::_exit(stopped);
    ::mprotect(guarded, guardedBytes, PROT_READ | PROT_WRITE);
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] |= trapFlag;
}

void onStored(int, siginfo_t*, void* context) {
    ::mprotect(guarded, guardedBytes, PROT_READ);
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] &= ~trapFlag;
}

void handle(int signal, void (*handler)(int, siginfo_t*, void*)) {
    struct sigaction action {};

    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO;
    ::sigaction(signal, &action, nullptr);
}

} // namespace

// Stands before the library's own in the search order.
extern "C" PINBUF_API void* pinbuf_map(const char* name, int a, int b, int c) {
    using Map = void* (*)(const char*, int, int, int);
    static const Map realMap = reinterpret_cast<Map>(::dlsym(RTLD_NEXT, "pinbuf_map"));
    if (isUnmappable) return nullptr;
    void* const region = realMap(name, a, b, c);
    if (isCounting) {
        guarded = static_cast<unsigned char*>(region);
        ::mprotect(guarded, guardedBytes, PROT_READ);
    }
    return region;
}

namespace Brixo {
namespace {

using namespace Testing;

constexpr U32 seed = 4;
constexpr U32 operations = 40;

class CacheTableCrash : public testing::Test {
protected:
    RegionFolder regions;
    Journal journal;

    CacheTableCrash() { Vel::TraceHandle::settingsAre("*/none"); }

    // Runs the writer until its n-th store is due; whether that came.
    bool stopsAtStore(unsigned n, const Shape& shape, U32 count) {
        journal.completedIs(0);
        const int status = inChild([&] {
            handle(SIGSEGV, onStore);
            handle(SIGTRAP, onStored);
            storesLeft = n;
            isCounting = true;
            runWriter(journal, shape, seed, count);
            return 0;
        });
        EXPECT_TRUE(status == 0 || status == stopped) << status;
        return status == stopped;
    }

    // Stops a writer before its every store, each time on a region that `prepare` leaves; how many
    // there were.
    template <class Prepare>
    unsigned stopEverywhere(const Shape& shape, const TableModel* before, U32 count,
                            Prepare prepare) {
        for (unsigned n = 0;; ++n) {
            regions.clear();
            prepare();
            const bool isStopped = stopsAtStore(n, shape, count);
            SCOPED_TRACE("stopped before store " + std::to_string(n) + " of " +
                         std::to_string(shape.size) + " slots of " +
                         std::to_string(shape.entrySize) + " bytes, seed " + std::to_string(seed));
            recover(regions, shape, before, seed, journal.completed());
            if (!isStopped || HasFailure()) return n;
        }
    }
};

TEST_F(CacheTableCrash, LeavesEveryCompletedWriteAtEveryStore) {
    for (const Shape& shape : {Shape{4, 6}, Shape{3, 4}, Shape{5, 21}}) {
        const unsigned stores = stopEverywhere(shape, nullptr, operations, [] {});
        EXPECT_GT(stores, shape.size + 2 + operations / 2) << "formatting and half the operations";
    }
}

TEST_F(CacheTableCrash, FormatsMagicFirstThenEverySlotThenTheFlag) {
    const Shape shape{3, 4};
    const std::vector<std::string> states = {
        region(0, 0, {{0, filled(4, 0)}, {0, filled(4, 0)}, {0, filled(4, 0)}}),
        region(0xbeefcafe, 0, {{0, filled(4, 0)}, {0, filled(4, 0)}, {0, filled(4, 0)}}),
        region(0xbeefcafe, 0, {{0xffffffff, filled(4, 0)}, {0, filled(4, 0)}, {0, filled(4, 0)}}),
        region(0xbeefcafe, 0,
               {{0xffffffff, filled(4, 0)}, {0xffffffff, filled(4, 0)}, {0, filled(4, 0)}}),
        region(
            0xbeefcafe, 0,
            {{0xffffffff, filled(4, 0)}, {0xffffffff, filled(4, 0)}, {0xffffffff, filled(4, 0)}})};
    for (unsigned n = 0; n < states.size(); ++n) {
        regions.clear();
        EXPECT_TRUE(stopsAtStore(n, shape, 0));
        EXPECT_EQ(regions.bytes(regionName), states[n]) << "before store " << n;
    }
    regions.clear();
    EXPECT_FALSE(stopsAtStore(5, shape, 0)) << "magic, three slots, flag";
}

TEST_F(CacheTableCrash, RecoversARecoveryThatStoppedAmongItsDuplicates) {
    const std::string duplicates = formattedRegion(
        {{1, "aa"}, {1, "bb"}, {2, "cc"}, {1, "dd"}, {2, "ee"}, {0xffffffff, "ff"}, {2, "gg"}});
    const Shape shape{7, 2};
    const TableModel model = modelOf(duplicates, shape);
    const unsigned stores =
        stopEverywhere(shape, &model, 0, [&] { regions.put(regionName, duplicates); });
    EXPECT_EQ(stores, 4u) << "one for each duplicate, none for anything else";
}

TEST_F(CacheTableCrash, DiesWhenItsRegionCannotBeMapped) {
    EXPECT_EQ(lastWordsOf([] {
                  isUnmappable = true;
                  openTable(3, 4);
              }),
              "CacheTable.cpp:#: assertion failed: pinbufPtr() (in openRegion)\n");
}

} // namespace
} // namespace Brixo
