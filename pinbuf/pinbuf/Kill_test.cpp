// A process that is killed while it makes regions, at every system call and at random moments.
#include <pinbuf/pinbuf.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <pinbuf/detail/TestSupport.h>
#include <random>
#include <string>
#include <sys/ptrace.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using pinbuf::test::RegionFolder;

unsigned alloc(const std::string& name, unsigned size) {
    return pinbuf_alloc_func(name.c_str(), size, "owner");
}

struct Region {
    std::string name;
    unsigned address;
    unsigned sizeBytes;
};

std::vector<Region> list() {
    std::vector<Region> regions;
    const int count = pinbuf_list(
        [](const pinbuf_region* region, void* context) {
            static_cast<std::vector<Region>*>(context)->push_back(
                {region->name, region->physical_address, region->size_bytes});
            return 0;
        },
        &regions);
    EXPECT_GE(count, 0) << pinbuf_error();
    return regions;
}

void expectDisjoint(std::vector<Region> regions) {
    std::sort(regions.begin(), regions.end(),
              [](const Region& a, const Region& b) { return a.address < b.address; });
    for (std::size_t i = 0; i < regions.size(); ++i) {
        EXPECT_NE(regions[i].address, 0U) << regions[i].name;
        if (i > 0) {
            EXPECT_GE(regions[i].address, regions[i - 1].address + regions[i - 1].sizeBytes);
        }
    }
}

// A number below `bound`; the same in both word sizes.
unsigned below(std::mt19937& random, unsigned bound) {
    return static_cast<unsigned>(random() % bound);
}

class Kill : public testing::Test {
protected:
    RegionFolder regions;
};

enum class Outcome { killed, finished, notPermitted };

// Runs `body` in a child and kills it at its n-th stop: each system call stops it before and after.
// As the library changes files by system calls alone, the stops are all the moments that leave
// different files behind.
template <typename Body>
Outcome killAtStop(unsigned n, Body body) {
    constexpr int notPermitted = 77;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(notPermitted);
        ::raise(SIGSTOP);
        ::_exit(body());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    for (unsigned stop = 0; WIFSTOPPED(status); ++stop) {
        if (stop == n) {
            ::kill(child, SIGKILL);
        } else {
            ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        }
        ::waitpid(child, &status, 0);
    }
    if (WIFSIGNALED(status)) return Outcome::killed;
    EXPECT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == notPermitted)
        << WEXITSTATUS(status);
    return WEXITSTATUS(status) == 0 ? Outcome::finished : Outcome::notPermitted;
}

// Kills the making of region "victim" at every stop, each time in a folder that `prepare` made, and
// checks what is left.
template <typename Prepare>
void killTheMakingEverywhere(const RegionFolder& folder, Prepare prepare) {
    constexpr unsigned sizeBytes = 5000;
    unsigned stops = 0;
    for (;; ++stops) {
        folder.clear();
        prepare();
        const std::vector<Region> before = list();
        const Outcome outcome =
            killAtStop(stops, [] { return alloc("victim", sizeBytes) == 0 ? 1 : 0; });
        if (outcome == Outcome::notPermitted) GTEST_SKIP() << "no right to trace a child";

        const auto context = "killed at stop " + std::to_string(stops);
        const bool isWhole = folder.has("victim");
        if (isWhole) {
            EXPECT_EQ(folder.bytes("victim"), std::string(sizeBytes, '\0')) << context;
        }
        unsigned listed = 0;
        for (const Region& region : list()) {
            if (region.name == "victim") listed = region.address;
        }
        EXPECT_EQ(isWhole, listed != 0) << context << ": a whole region has its address on record";

        const unsigned address = alloc("victim", sizeBytes);
        ASSERT_NE(address, 0U) << context << ": " << pinbuf_error();
        if (isWhole) {
            EXPECT_EQ(address, listed) << context;
        }
        EXPECT_EQ(folder.bytes("victim"), std::string(sizeBytes, '\0')) << context;
        for (const Region& region : before)
            EXPECT_EQ(alloc(region.name, region.sizeBytes), region.address) << context;
        ASSERT_NE(alloc("next", 1), 0U) << context;
        expectDisjoint(list());
        for (const std::string& leaf : folder.leaves()) {
            EXPECT_TRUE(leaf == ".locks" || leaf == ".regions" || leaf[0] != '.')
                << context << ": " << leaf << " was left over";
        }
        if (outcome == Outcome::finished || testing::Test::HasFailure()) break;
    }
    EXPECT_GT(stops, 20U) << "the making takes more system calls than that";
}

TEST_F(Kill, AtAnySystemCallOfTheFirstRegion) {
    killTheMakingEverywhere(regions, [] {});
}

TEST_F(Kill, AtAnySystemCallOfAFurtherRegion) {
    killTheMakingEverywhere(regions, [] {
        alloc("a", 1);
        alloc("b", 10000);
    });
}

TEST_F(Kill, AtAnySystemCallWhileTheDirectoryFileGrows) {
    killTheMakingEverywhere(regions, [] {
        for (int i = 0; i < 15; ++i) alloc("r" + std::to_string(i), 1);
    });
}

TEST_F(Kill, AtAnySystemCallWhileVanishedRegionsAreGivenUp) {
    killTheMakingEverywhere(regions, [this] {
        for (int i = 0; i < 14; ++i) alloc("r" + std::to_string(i), 1);
        alloc("victim", 9000);
        for (const char* name : {"r3", "r4", "r5", "victim"}) fs::remove(regions.path(name));
    });
}

// What a kill left under the unfinished names must not disturb the next making, nor be mistaken for
// a region.
TEST_F(Kill, AtAnySystemCallAfterEarlierKills) {
    killTheMakingEverywhere(regions, [this] {
        regions.make();
        regions.put(".region.unfinished", std::string(100, 'x'));
        regions.put(".regions.unfinished", std::string(100, 'x'));
    });
}

// A writer that makes, fills and removes regions in a loop is killed at a random moment, and the
// next one goes on.
TEST_F(Kill, AtARandomMoment) {
    constexpr unsigned seed = 77003;
    constexpr int rounds = 250;
    constexpr int names = 24;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto sizeOf = [](int name) { return static_cast<unsigned>(1 + name * 1777); };
    int wholeRegions = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        if (round % 10 == 0) regions.clear();
        const unsigned childSeed = below(random, 1U << 31U);

        const pid_t child = ::fork();
        if (child == 0) {
            std::mt19937 childRandom(childSeed);
            for (;;) {
                const int name = static_cast<int>(below(childRandom, names));
                const std::string text = "r" + std::to_string(name);
                if (below(childRandom, 4) == 0) {
                    ::unlink(regions.path(text).c_str());
                } else if (alloc(text, sizeOf(name)) == 0) {
                    ::_exit(1);
                } else if (auto* const bytes = pinbuf_map(text.c_str(), 1, 0, 0);
                           bytes == nullptr) {
                    ::_exit(2);
                } else {
                    std::memset(bytes, 1 + name, sizeOf(name));
                }
            }
        }
        ::usleep(below(random, 4000));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status))
            << "round " << round << ": the writer failed with " << WEXITSTATUS(status);

        const std::vector<Region> left = list();
        expectDisjoint(left);
        for (const Region& region : left) {
            const int name = std::stoi(region.name.substr(1));
            ASSERT_EQ(region.sizeBytes, sizeOf(name)) << "round " << round << ' ' << region.name;
            const std::string bytes = regions.bytes(region.name);
            const bool isItsOwn = std::all_of(bytes.begin(), bytes.end(), [name](char byte) {
                return byte == 0 || byte == static_cast<char>(1 + name);
            });
            ASSERT_TRUE(isItsOwn) << "round " << round << ": " << region.name
                                  << " holds bytes of another region";
            ASSERT_EQ(alloc(region.name, region.sizeBytes), region.address);
            ++wholeRegions;
        }
        ASSERT_NE(alloc("r0", 1), 0U) << pinbuf_error();
    }
    EXPECT_GT(wholeRegions, rounds) << "the writers got something done before they were killed";
}

} // namespace
