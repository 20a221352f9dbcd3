#include <pinbuf/detail/Mapping.h>

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::failureOf;
using test::inChild;
using test::RegionFolder;

class MapOnce : public testing::Test {
protected:
    unsigned char* map(const std::string& leaf) {
        return static_cast<unsigned char*>(mapOnce(FolderFile::open(folder, leaf).value()));
    }

    RegionFolder regions;
    Folder folder = Folder::openOrMake(regions.path());
};

TEST_F(MapOnce, ShowsTheFileAndWritesIntoIt) {
    regions.put("r", "0123");
    unsigned char* const r = map("r");
    EXPECT_EQ(std::memcmp(r, "0123", 4), 0);
    r[1] = 'x';
    EXPECT_EQ(regions.bytes("r"), "0x23");
}

TEST_F(MapOnce, GivesTheSameAddressAgain) {
    regions.put("r", "0123");
    regions.put("s", "0123");
    unsigned char* const r = map("r");
    EXPECT_NE(map("s"), r);
    EXPECT_EQ(map("r"), r);
}

TEST_F(MapOnce, MapsAReplacedFileAnewAndKeepsTheOldOne) {
    regions.put("r", "old");
    unsigned char* const before = map("r");
    fs::remove(regions.path("r"));
    regions.put("r", "new");
    unsigned char* const after = map("r");
    EXPECT_NE(after, before);
    EXPECT_EQ(std::memcmp(after, "new", 3), 0);
    EXPECT_EQ(std::memcmp(before, "old", 3), 0);
    EXPECT_EQ(map("r"), after);
}

TEST_F(MapOnce, MapsAFileOfAnotherSizeAnew) {
    regions.put("r", "0123");
    unsigned char* const before = map("r");
    fs::resize_file(regions.path("r"), 10000);
    unsigned char* const after = map("r");
    EXPECT_NE(after, before);
    after[9999] = 1;
    EXPECT_EQ(before[0], '0');
}

// The bytes behind the region can be read, and are zero, through the end of its last page and one
// page more.
TEST_F(MapOnce, IsFollowedByZeros) {
    for (const std::size_t sizeBytes :
         {1U, 7U, 8U, 4087U, 4088U, 4095U, 4096U, 4097U, 8191U, 8192U, 8193U}) {
        const std::string leaf = "r" + std::to_string(sizeBytes);
        regions.put(leaf, std::string(sizeBytes, '\xff'));
        const unsigned char* const r = map(leaf);
        const std::size_t readable = (sizeBytes + 4095) / 4096 * 4096 + 4096;
        for (std::size_t i = sizeBytes; i < readable; ++i)
            ASSERT_EQ(r[i], 0) << sizeBytes << " at " << i;
        U64 word = 0;
        std::memcpy(&word, r + sizeBytes - 1, sizeof word); // a whole word at the last byte
        EXPECT_EQ(word, 0xffU);
    }
}

TEST_F(MapOnce, ProtectsTheZerosBehindIt) {
    regions.put("r", std::string(4096, 'x'));
    unsigned char* const r = map("r");
    EXPECT_EQ(inChild([&] {
                  ::signal(SIGSEGV, SIG_DFL); // a sanitizer may have set its own
                  *const_cast<volatile unsigned char*>(r + 4096) = 1;
                  return 0;
              }),
              -SIGSEGV);
}

TEST_F(MapOnce, IsSharedWithAForkedProcessThatFindsItAgain) {
    regions.put("r", "0123");
    unsigned char* const r = map("r");
    EXPECT_EQ(inChild([&] {
                  if (map("r") != r) return 1;
                  r[0] = 'c';
                  return 0;
              }),
              0);
    EXPECT_EQ(r[0], 'c');
}

TEST_F(MapOnce, RefusesAnEmptyFile) {
    regions.put("r", "");
    EXPECT_EQ(failureOf([&] { map("r"); }), "the region's file is empty");
}

TEST_F(MapOnce, RefusesWhatDoesNotFit32Bits) {
    regions.put("r", "");
    fs::resize_file(regions.path("r"), std::uintmax_t{1} << 32U);
    EXPECT_EQ(failureOf([&] { map("r"); }), "cannot map 4294967296 bytes: Cannot allocate memory");
    if (sizeof(void*) == 4) {
        fs::resize_file(regions.path("r"), 0xffffffff);
        EXPECT_EQ(failureOf([&] { map("r"); }),
                  "cannot map 4294967295 bytes: Cannot allocate memory");
    }
}

TEST_F(MapOnce, SaysWhenTheAddressSpaceHasNoRoom) {
    regions.put("r", "");
    fs::resize_file(regions.path("r"), 1U << 30U);
    EXPECT_EQ(inChild([&] {
                  const rlimit limit{1, 1}; // what the process has got it keeps
                  if (::setrlimit(RLIMIT_AS, &limit) != 0) return 1;
                  const std::string reason = failureOf([&] { map("r"); });
                  return reason == "cannot map 1073741824 bytes: Cannot allocate memory" ? 0 : 2;
              }),
              0);
}

TEST_F(MapOnce, GivesThreadsThatRaceOneAddress) {
    for (int round = 0; round < 50; ++round) {
        const std::string leaf = "r" + std::to_string(round);
        regions.put(leaf, "0123");
        std::array<unsigned char*, 4> seen{};
        std::vector<std::thread> threads;
        for (unsigned char*& address : seen) {
            threads.emplace_back([&, leaf] { address = map(leaf); });
        }
        for (std::thread& thread : threads) thread.join();
        for (const unsigned char* address : seen) EXPECT_EQ(address, seen[0]) << leaf;
        EXPECT_EQ(seen[0][3], '3');
    }
}

} // namespace
} // namespace pinbuf
