#include <pinbuf/detail/Directory.h>

#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <pinbuf/detail/Integers.h>
#include <pinbuf/detail/TestSupport.h>
#include <string>

namespace pinbuf {
namespace {

namespace fs = std::filesystem;
using test::failureOf;
using test::RegionFolder;

std::string golden(const std::string& name) {
    std::ifstream file(BRIXO_SOURCE_DIR "/tests/golden/pinbuf-" + name + ".regions",
                       std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class DirectoryTest : public testing::Test {
protected:
    Directory open() { return Directory::openOrMake(folder); }

    // Enters a region whose file exists, sparse, so that the record does not count as vanished.
    U32 enter(Directory& directory, const std::string& name, U32 sizeBytes) {
        const Directory::Place place = directory.placeFor(sizeBytes);
        regions.put(name, "");
        fs::resize_file(regions.path(name), sizeBytes);
        directory.enter(place, RegionName(name.c_str()), sizeBytes, "owner", RegionOrigin::made);
        return place.address;
    }

    std::string fileBytes() const { return regions.bytes(Directory::leaf); }

    RegionFolder regions;
    Folder folder = Folder::openOrMake(regions.path());
};

TEST_F(DirectoryTest, IsMadeOnceAndFoundAgain) {
    EXPECT_FALSE(Directory::openToRead(folder).has_value());
    EXPECT_TRUE(regions.leaves().empty()) << "looking makes nothing";
    open();
    EXPECT_EQ(regions.leaves(), std::vector<std::string>{".regions"});
    EXPECT_EQ(RegionFolder::modeOf(regions.path(Directory::leaf)), 0600U);
    const std::string before = fileBytes();
    open();
    EXPECT_EQ(fileBytes(), before);
}

TEST_F(DirectoryTest, FindsWhatWasEntered) {
    {
        Directory directory = open();
        EXPECT_EQ(directory.find("a"), nullptr);
        EXPECT_EQ(enter(directory, "a", 4097), 0x40000000U);
        EXPECT_EQ(enter(directory, "b", 1), 0x40002000U);
    }
    const Directory directory = open();
    const DirectoryRecord* const a = directory.find("a");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->address, 0x40000000U);
    EXPECT_EQ(a->sizeBytes, 4097U);
    EXPECT_STREQ(a->owner, "owner");
    EXPECT_EQ(directory.find("b")->address, 0x40002000U);
    EXPECT_EQ(directory.find("aa"), nullptr);
    EXPECT_EQ(directory.find(""), nullptr);
    EXPECT_EQ(Directory::openToRead(folder)->find("b")->address, 0x40002000U);
}

TEST_F(DirectoryTest, ForgetsOneRegionAndNoOther) {
    Directory directory = open();
    enter(directory, "a", 1);
    enter(directory, "b", 1);
    directory.forget("a");
    directory.forget("never entered");
    EXPECT_EQ(directory.find("a"), nullptr);
    EXPECT_EQ(open().find("a"), nullptr);
    EXPECT_EQ(open().find("b")->address, 0x40001000U);
    EXPECT_EQ(enter(directory, "c", 4096), 0x40000000U) << "the address is free again";
}

TEST_F(DirectoryTest, CutsAnOwnerAfter111Bytes) {
    Directory directory = open();
    directory.enter(directory.placeFor(1), RegionName("fits"), 1, std::string(111, 'o'),
                    RegionOrigin::made);
    directory.enter(directory.placeFor(1), RegionName("cut"), 1, std::string(112, 'o'),
                    RegionOrigin::made);
    EXPECT_EQ(open().find("fits")->owner, std::string(111, 'o'));
    EXPECT_EQ(open().find("cut")->owner, std::string(111, 'o'));
}

TEST_F(DirectoryTest, GrowsByAPageWhenItsRecordsAreUsed) {
    Directory directory = open();
    for (int i = 0; i < 15; ++i) enter(directory, "r" + std::to_string(i), 1);
    EXPECT_EQ(fileBytes().size(), 4096U);
    enter(directory, "r15", 1);
    EXPECT_EQ(fileBytes().size(), 8192U);
    for (int i = 16; i < 31; ++i) enter(directory, "r" + std::to_string(i), 1);
    EXPECT_EQ(fileBytes().size(), 8192U);
    const Directory again = open();
    for (unsigned i = 0; i < 31; ++i) {
        EXPECT_EQ(again.find("r" + std::to_string(i))->address, 0x40000000U + 4096 * i);
    }
}

TEST_F(DirectoryTest, TakesARecordOfAVanishedRegionBeforeItGrows) {
    Directory directory = open();
    for (int i = 0; i < 15; ++i) enter(directory, "r" + std::to_string(i), 1);
    fs::remove(regions.path("r7"));
    EXPECT_NE(directory.find("r7"), nullptr) << "nobody needed it yet";
    EXPECT_EQ(enter(directory, "new", 1), 0x40007000U);
    EXPECT_EQ(directory.find("r7"), nullptr);
    EXPECT_EQ(fileBytes().size(), 4096U);
}

TEST_F(DirectoryTest, TakesTheAddressesOfVanishedRegionsWhenNoOthersAreLeft) {
    Directory directory = open();
    EXPECT_EQ(enter(directory, "low", 0x40000000), 0x40000000U);
    EXPECT_EQ(enter(directory, "high", 0x40000000), 0x80000000U);
    EXPECT_EQ(failureOf([&] { directory.placeFor(1); }),
              "no physical addresses left for 1 bytes, the longest free range has 0");
    fs::resize_file(regions.path("high"), 0x1000); // a file of another size is another region
    EXPECT_EQ(enter(directory, "new", 0x3ffff000), 0x80000000U);
    EXPECT_EQ(failureOf([&] { directory.placeFor(4097); }),
              "no physical addresses left for 4097 bytes, the longest free range has 4096");
    EXPECT_EQ(enter(directory, "last", 4096), 0xbffff000U);
    EXPECT_EQ(directory.find("low")->address, 0x40000000U);
}

TEST_F(DirectoryTest, HasNoRoomForMoreThanTheWindow) {
    Directory directory = open();
    EXPECT_EQ(directory.placeFor(0x80000000).address, 0x40000000U);
    for (const U64 sizeBytes : {0x80000001ULL, 0xffffffffULL, 0x100000000ULL, 1ULL << 62U}) {
        EXPECT_EQ(failureOf([&] { directory.placeFor(sizeBytes); }),
                  "no physical addresses left for " + std::to_string(sizeBytes) +
                      " bytes, the longest free range has 2147483648");
    }
}

TEST_F(DirectoryTest, IsOpenedThroughNoLink) {
    fs::create_symlink(regions.beside("elsewhere"), regions.path(Directory::leaf));
    EXPECT_EQ(failureOf([&] { open(); }),
              "\"" + regions.path(Directory::leaf) + "\" is a symbolic link");
    EXPECT_FALSE(fs::exists(regions.beside("elsewhere")));
}

// What this process remembers of a directory file is not what it believes when others changed it.
class RememberedDirectory : public DirectoryTest {
protected:
    // Another process enters `count` regions.
    void enterElsewhere(const std::string& prefix, int count) {
        ASSERT_EQ(test::inChild([&] {
                      Directory directory = open();
                      for (int i = 0; i < count; ++i)
                          enter(directory, prefix + std::to_string(i), 1);
                      return 0;
                  }),
                  0);
    }
};

TEST_F(RememberedDirectory, SeesWhatOthersEntered) {
    {
        Directory directory = open();
        enter(directory, "mine", 1);
    }
    for (const int count : {1, 5, 31, 32, 33, 100}) { // up to 32 changes are told, more read anew
        const std::string prefix = "theirs-" + std::to_string(count) + "-";
        enterElsewhere(prefix, count);
        Directory directory = open();
        for (int i = 0; i < count; ++i) {
            EXPECT_NE(directory.find(prefix + std::to_string(i)), nullptr) << count << ' ' << i;
        }
        const U32 address = directory.find(prefix + std::to_string(count - 1))->address;
        EXPECT_EQ(enter(directory, "mine-" + std::to_string(count), 1), address + 4096);
        EXPECT_EQ(directory.find("mine")->address, 0x40000000U);
    }
}

TEST_F(RememberedDirectory, SeesWhatOthersGaveUpAndEnteredAgain) {
    {
        Directory directory = open();
        for (const char* name : {"a", "b", "c"}) enter(directory, name, 1);
    }
    ASSERT_EQ(test::inChild([&] {
                  Directory directory = open();
                  directory.forget("a");
                  directory.forget("b");
                  enter(directory, "b", 1); // another record and address than before
                  enter(directory, "a", 1);
                  return 0;
              }),
              0);
    const Directory directory = open();
    EXPECT_EQ(directory.find("b")->address, 0x40000000U);
    EXPECT_EQ(directory.find("a")->address, 0x40001000U);
    EXPECT_EQ(directory.find("c")->address, 0x40002000U);
}

TEST_F(RememberedDirectory, IsAnotherOneWhenItsFileIsReplaced) {
    {
        Directory directory = open();
        enter(directory, "mine", 1);
    }
    regions.replace(Directory::leaf, golden("several"));
    EXPECT_EQ(open().find("mine"), nullptr);
    EXPECT_NE(open().find("omega"), nullptr);
    fs::rename(regions.path(Directory::leaf), regions.beside("moved"));
    EXPECT_EQ(open().find("omega"), nullptr);
    EXPECT_EQ(fs::file_size(regions.beside("moved")), golden("several").size());
}

TEST_F(RememberedDirectory, IsReadAgainWhenItsBytesChangeWithoutBeingCounted) {
    {
        Directory directory = open();
        enter(directory, "mine", 1);
    }
    const std::optional<FileStatus> before =
        statusOf(AT_FDCWD, regions.path(Directory::leaf).c_str());
    const auto hasNewTime = [&] {
        return statusOf(AT_FDCWD, regions.path(Directory::leaf).c_str())->changed !=
               before->changed;
    };
    do { // the clock of files is a coarse one
        std::fstream file(regions.path(Directory::leaf),
                          std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(256 + 16);
        file << "else";
    } while (!hasNewTime());
    EXPECT_EQ(open().find("mine"), nullptr);
    EXPECT_NE(open().find("else"), nullptr);
}

TEST_F(RememberedDirectory, OverwritesNoRecordThatSomebodyWroteWithoutCounting) {
    Directory directory = open();
    enter(directory, "mine", 1);
    {
        std::fstream file(regions.path(Directory::leaf),
                          std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(2 * 256 + 16);
        file << "theirs";
    }
    const std::string bytes = fileBytes();
    EXPECT_EQ(failureOf([&] { directory.placeFor(1); }),
              "\"" + regions.path(Directory::leaf) + "\" is being changed by other means");
    EXPECT_EQ(fileBytes(), bytes);
}

TEST_F(RememberedDirectory, CountsItsChangesModulo32Bits) {
    std::string bytes = golden("empty");
    const U32 almost = 0xfffffffe;
    std::memcpy(bytes.data() + 20, &almost, sizeof almost);
    regions.replace(Directory::leaf, bytes);
    EXPECT_EQ(open().find("theirs-0"), nullptr);
    enterElsewhere("theirs-", 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_NE(open().find("theirs-" + std::to_string(i)), nullptr) << i;
    }
}

// The golden files were made by tests/golden/pinbuf.py, which shares no code with the library.
TEST_F(DirectoryTest, WritesTheGoldenBytesOfAnEmptyFolder) {
    open();
    EXPECT_EQ(fileBytes(), golden("empty"));
}

TEST_F(DirectoryTest, WritesTheGoldenBytesOfSeveralRegions) {
    Directory directory = open();
    const auto put = [&](const std::string& name, U32 sizeBytes, const std::string& owner,
                         RegionOrigin origin = RegionOrigin::made) {
        directory.enter(directory.placeFor(sizeBytes), RegionName(name.c_str()), sizeBytes, owner,
                        origin);
    };
    put("alpha", 1, "agent-a");
    put("CacheTable-3-1-77", 4008, "@BrixoCacheTable");
    put("gone", 8193, "x");
    put(std::string(127, 'n'), 4096, std::string(111, 'o'));
    put("omega", 4097, "", RegionOrigin::unknown);
    directory.forget("gone");
    put("late", 8192, std::string(112, 'o'));
    directory.forget("alpha");
    EXPECT_EQ(fileBytes(), golden("several"));
}

TEST_F(DirectoryTest, WritesTheGoldenBytesOfMoreThanAPage) {
    Directory directory = open();
    for (unsigned i = 0; i < 16; ++i) {
        const std::string number = std::to_string(i);
        const U32 sizeBytes = 4096 * i + 1;
        regions.put("region-" + number, std::string(sizeBytes, 'x'));
        directory.enter(directory.placeFor(sizeBytes), RegionName(("region-" + number).c_str()),
                        sizeBytes, "owner-" + number, RegionOrigin::made);
    }
    EXPECT_EQ(fileBytes(), golden("grown"));
}

TEST_F(DirectoryTest, ReadsTheGoldenBytes) {
    regions.replace(Directory::leaf, golden("several"));
    const Directory directory = open();

    struct Expected {
        std::string name;
        U32 address;
        U32 sizeBytes;
        std::string owner;
        RegionOrigin origin = RegionOrigin::made;
    };

    for (const Expected& expected :
         {Expected{"CacheTable-3-1-77", 0x40001000, 4008, "@BrixoCacheTable"},
          Expected{"late", 0x40002000, 8192, std::string(111, 'o')},
          Expected{std::string(127, 'n'), 0x40005000, 4096, std::string(111, 'o')},
          Expected{"omega", 0x40006000, 4097, "", RegionOrigin::unknown}}) {
        const DirectoryRecord* const record = directory.find(expected.name);
        ASSERT_NE(record, nullptr) << expected.name;
        EXPECT_EQ(record->address, expected.address);
        EXPECT_EQ(record->sizeBytes, expected.sizeBytes);
        EXPECT_EQ(record->owner, expected.owner);
        EXPECT_EQ(record->origin, expected.origin);
    }
    EXPECT_EQ(directory.find("alpha"), nullptr);
    EXPECT_EQ(directory.find("gone"), nullptr);
}

class DamagedDirectory : public DirectoryTest {
protected:
    // What opening says about the golden file after `spoil` had its way with it; the file must stay
    // as it is.
    std::string objection(const std::function<void(std::string&)>& spoil) {
        std::string bytes = golden("several");
        spoil(bytes);
        regions.replace(Directory::leaf, bytes);
        const std::string path = "\"" + regions.path(Directory::leaf) + "\" ";
        const std::string reason = failureOf([&] { open(); });
        EXPECT_EQ(fileBytes(), bytes);
        EXPECT_EQ(reason, failureOf([&] { Directory::openToRead(folder); }));
        EXPECT_TRUE(reason.starts_with(path)) << reason;
        return reason.substr(std::min(path.size(), reason.size()));
    }

    static void storeWord(std::string& bytes, std::size_t offsetBytes, U32 word) {
        std::memcpy(bytes.data() + offsetBytes, &word, sizeof word);
    }

    // Offset of a field of record `index`.
    static std::size_t at(std::size_t index, std::size_t fieldBytes) {
        return 256 * (1 + index) + fieldBytes;
    }
};

TEST_F(DamagedDirectory, WithoutAHeaderIsNone) {
    EXPECT_EQ(objection([](std::string& b) { b.clear(); }),
              "is not a directory of regions: it has 0 bytes");
    EXPECT_EQ(objection([](std::string& b) { b.resize(255); }),
              "is not a directory of regions: it has 255 bytes");
    EXPECT_EQ(objection([](std::string& b) { storeWord(b, 0, 0); }),
              "is not a directory of regions: it begins with other bytes");
    EXPECT_EQ(objection([](std::string& b) { b.replace(0, 4, "#!/b"); }),
              "is not a directory of regions: it begins with other bytes");
}

TEST_F(DamagedDirectory, LargerThanTheWindowCanNeedIsNone) {
    regions.replace(Directory::leaf, golden("empty"));
    constexpr std::uintmax_t tooMany = 256 + 256 * (524288 + 16) + 256;
    fs::resize_file(regions.path(Directory::leaf), tooMany);
    EXPECT_EQ(failureOf([&] { open(); }),
              "\"" + regions.path(Directory::leaf) +
                  "\" is not a directory of regions: it has 134222336 bytes");
}

TEST_F(DamagedDirectory, OfAnotherVersionIsNotGuessed) {
    EXPECT_EQ(objection([](std::string& b) { storeWord(b, 4, 2); }),
              "is written in version 2, only version 1 is known");
}

TEST_F(DamagedDirectory, WithOtherSizesIsRefused) {
    for (const std::size_t field : {8U, 12U, 16U}) {
        EXPECT_EQ(objection([&](std::string& b) { storeWord(b, field, 512); }),
                  "is damaged: its header has other sizes than version 1 has");
    }
    EXPECT_EQ(objection([](std::string& b) { b.resize(b.size() - 1); }),
              "is damaged: it ends within a record");
}

TEST_F(DamagedDirectory, SaysWhichRecordIsWrong) {
    EXPECT_EQ(objection([](std::string& b) { storeWord(b, at(1, 0), 2); }),
              "is damaged: record 1 has an unknown state");
    EXPECT_EQ(objection([](std::string& b) { storeWord(b, at(14, 0), 0x100); }),
              "is damaged: record 14 has an unknown state");
    for (const U32 address : {0U, 1U, 0x40000001U, 0x3ffff000U, 0xc0000000U, 0xfffff000U}) {
        EXPECT_EQ(objection([&](std::string& b) { storeWord(b, at(2, 4), address); }),
                  "is damaged: record 2 lies outside the address window");
    }
    for (const U32 sizeBytes : {0U, 0xffffffffU, 0x80000000U}) {
        EXPECT_EQ(objection([&](std::string& b) { storeWord(b, at(2, 8), sizeBytes); }),
                  "is damaged: record 2 lies outside the address window");
    }
}

TEST_F(DamagedDirectory, TrustsNoName) {
    const std::string expected = "is damaged: record 1 has no region name";
    EXPECT_EQ(objection([](std::string& b) { b.replace(at(1, 16), 128, 128, 'n'); }), expected)
        << "no end";
    EXPECT_EQ(objection([](std::string& b) { b.replace(at(1, 16), 5, "../a\0", 5); }), expected);
    EXPECT_EQ(objection([](std::string& b) { b[at(1, 16)] = '\0'; }), expected);
    EXPECT_EQ(objection([](std::string& b) { b[at(1, 17)] = '\n'; }), expected);
    EXPECT_EQ(objection([](std::string& b) { b.replace(at(1, 144), 112, 112, 'o'); }),
              "is damaged: record 1 has no owner name");
}

TEST_F(DamagedDirectory, TrustsNoTwoRecordsThatContradictEachOther) {
    EXPECT_EQ(objection([](std::string& b) { b.replace(at(1, 16), 6, "omega\0", 6); }),
              "is damaged: two records have the name \"omega\"");
    EXPECT_EQ(objection([](std::string& b) { storeWord(b, at(1, 4), 0x40006000); }),
              "is damaged: two regions overlap");
    EXPECT_EQ(objection([](std::string& b) { storeWord(b, at(1, 8), 4097); }),
              "is damaged: two regions overlap");
}

TEST_F(DamagedDirectory, IgnoresWhatAFreeRecordHolds) {
    std::string bytes = golden("several");
    bytes.replace(at(0, 4), 252, 252, '\xff');
    regions.replace(Directory::leaf, bytes);
    EXPECT_EQ(failureOf([&] { open(); }), "");
}

TEST_F(DamagedDirectory, KnowsNoOtherOriginThanMade) {
    std::string bytes = golden("several");
    for (const U32 origin : {0U, 2U, 0x100U, 0xffffffffU}) {
        storeWord(bytes, at(1, 12), origin);
        regions.replace(Directory::leaf, bytes);
        EXPECT_FALSE(open().find("CacheTable-3-1-77")->isMade());
    }
    storeWord(bytes, at(1, 12), 1);
    regions.replace(Directory::leaf, bytes);
    EXPECT_TRUE(open().find("CacheTable-3-1-77")->isMade());
}

// A flipped bit may change what the file says; it never makes opening do anything but answer or
// refuse.
TEST_F(DamagedDirectory, SurvivesEveryFlippedBit) {
    const std::string intact = golden("several").substr(0, 256 * 7);
    for (std::size_t bit = 0; bit < intact.size() * 8; ++bit) {
        std::string bytes = intact;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
        regions.replace(Directory::leaf, bytes);
        const std::string reason = failureOf([&] { open().placeFor(1); });
        ASSERT_TRUE(reason.empty() ||
                    reason.starts_with("\"" + regions.path(Directory::leaf) + "\" is "))
            << reason;
    }
}

} // namespace
} // namespace pinbuf
